// Files, directories and the places where the launcher finds its own. Nothing here throws for a
// failed system call, and paths are used as they are given. Only four functions write lines, to
// standard error: the two copy functions, those of success included, and Flush and EndCopies for
// their failures.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace torvane {

// The full path of the running executable, links not resolved; empty when the platform cannot tell.
std::string ExecutableFile();

// ExecutableFile() up to its last "/", that one excluded; unchanged when there is none.
std::string ExecutableDirectory();

// The folder of the user's application data, without a trailing "/"; empty when it does not exist
// or its path takes more than 1023 bytes. Never created.
std::string UserDataDirectory();

// UserDataDirectory(), "/", org, "/" and name; empty when the user data directory is.
std::string ApplicationDataDirectory(const std::string& org, const std::string& name);

// True when anything is at path, a directory too. Links are followed: one to nowhere gives false.
bool FileExists(const std::string& path);

// True when path itself is a directory. Links are not followed: one to a directory gives false.
bool DirectoryExists(const std::string& path);

// Removes a file, or a link and not what it points to; false on failure and for a directory.
bool DeleteFile(const std::string& path);

// Removes the file at path, or the directory with all that is below it, at any depth. Links below
// it go, what they point to stays; a link at path itself stays too. False when something that
// should go is left.
bool DeleteTree(const std::string& path);

// The names of all entries but "." and "..", in ascending byte order; empty on failure.
std::vector<std::string> ListDirectory(const std::string& directory);

// The names of ListDirectory that match the shell pattern. Letter case is ignored, "*" and "?"
// match a leading dot, and a backslash is an ordinary character.
std::vector<std::string> SearchDirectory(const std::string& directory, const std::string& pattern);

// Creates the directory and its missing parents with the mode 0755 less the creation mask; false at
// the first one that cannot be created. The path is taken as absolute, with or without a leading
// "/". Whatever exists already is accepted, so true does not say that path is a directory.
bool MakeDirectory(const std::string& path);

// Opens the stream on the file that path leads to, created or emptied, for its owner alone: with
// the mode 0600.
void OpenPrivate(const std::string& path, std::ofstream* stream);

// Copies the bytes and permission bits of a file, links followed, creating missing parents of the
// destination (taken as absolute) and replacing a file there. A link to a directory is copied as a
// link; anything else but a file fails and is not opened. True only when every byte has reached the
// file system. What a failed copy leaves stays: *incomplete, if given, becomes true when that is a
// part of the file. A copy onto itself succeeds and changes nothing.
bool CopyFile(const std::string& source, const std::string& destination,
              bool* incomplete = nullptr);

// Copies every file below the directory source to the same relative path below destination, where
// directories come into being only as parents of files. Links are never entered; a directory that
// cannot be listed counts as empty. False when source is no directory, and at the first file that
// fails.
bool CopyDirectory(const std::string& source, const std::string& destination);

// Stores the whole mode word, file type included, of what path leads to; on failure returns false
// and leaves *mode alone.
bool GetPermissions(const std::string& path, int* mode);

// Applies the permission bits of mode (octal 07777) to what path leads to; false on failure.
bool SetPermissions(const std::string& path, int mode);

// Waits until what was written to a file, or to the whole file system of a directory, is on the
// disk; true then, and when nothing is at path. Links are followed.
bool Flush(const std::string& path);

// Notes that path, where nothing is yet, is about to be made: until EndCopies a symbolic link in
// the directory notes leads there. Both paths are absolute; notes is created when missing. Where no
// link can be made the copy goes unnoted.
void NoteCopy(const std::string& notes, const std::string& path);

// Removes a file that has been copied, and has EndCopies keep all noted copies from now on, in one
// step: a killed process leaves both done or neither. False when the file stays.
bool RemoveSource(const std::string& notes, const std::string& source);

// Removes all notes and their directory, and first, unless keep is true, the files and directories
// that they lead to. A note whose copy cannot be removed stays.
void EndCopies(const std::string& notes, bool keep);

// Waits until no other process holds the directory, then holds it for the rest of this process,
// programs that it starts excluded. Returns at once where the file system has no locks.
void LockDirectory(const std::string& path);

}  // namespace torvane

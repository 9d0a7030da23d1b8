// Questions about files, and copies of them. Nothing here throws for a failed system call. Only
// Flush and the copy functions write lines, to standard error; the latter those of success, too.
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

// True when path leads to nothing, also by a link to nowhere or in a circle. False also when that
// cannot be told.
bool IsMissing(const std::string& path);

// True when path itself is a directory. Links are not followed: one to a directory gives false.
bool DirectoryExists(const std::string& path);

// True when path itself is a link, and leads to a directory.
bool LinksToDirectory(const std::string& path);

// True when entries of one directory can be moved to the other: both, links followed, are
// directories of the same file system that may be written to.
bool CanMove(const std::string& from, const std::string& to);

// Removes a file, or a link and not what it points to; false on failure and for a directory.
bool DeleteFile(const std::string& path);

// Removes what is at path, links not followed: anything, or a directory with all that is below it,
// at any depth, but for other file systems mounted there. False when something is left.
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

// Opens the stream on the file that path leads to, created or emptied, with the mode 0600.
void OpenPrivate(const std::string& path, std::ofstream* stream);

// Copies the bytes and permission bits of a file, links followed, creating missing parents of the
// destination (taken as absolute) and writing into a file there. A link to a directory is copied as
// a link; anything else but a file fails and is not opened, at either end. True only when every
// byte has reached the file system. What a failed copy leaves stays; a copy onto itself succeeds.
bool CopyFile(const std::string& source, const std::string& destination);

// Copies every file below a directory to the same relative path below destination; directories come
// into being only as their parents. Links are never entered; a directory that cannot be listed
// counts as empty. False when source is no directory, and at the first file that fails.
bool CopyDirectory(const std::string& source, const std::string& destination);

// What a copy has made; it has succeeded from whole on. unprotected: a file without its
// permissions, which could not be applied. existing: nothing, because a file is its own copy or a
// tree has none. A failed tree is a part only when nothing was in its place before.
enum class Made { nothing, part, unprotected, whole, link, existing };

// The same copies, made at path. Their lines tell the destination.
Made CopyFile(const std::string& source, const std::string& destination, const std::string& path);
Made CopyDirectory(const std::string& source, const std::string& destination,
                   const std::string& path);

// Stores the whole mode word, file type included, of what path leads to; if not, returns false.
bool GetPermissions(const std::string& path, int* mode);

// Applies the permission bits of mode (octal 07777) to what path leads to; false on failure.
bool SetPermissions(const std::string& path, int mode);

// Waits until the file that path leads to, or the whole file system of a directory, is on the disk.
// On failure false, and a line tells the destination; true where there is no way to do it.
bool Flush(const std::string& path, const std::string& destination);

// Waits until no other process holds the directory, then holds it for the rest of this process,
// programs that it starts excluded. False, at once, where the file system has no locks.
bool LockDirectory(const std::string& path);

}  // namespace torvane

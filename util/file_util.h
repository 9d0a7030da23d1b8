// Questions about files, and copies of them. Nothing here throws for a failed system call. Only the
// copy functions write lines, to standard error, those of success too.
//
// A copy is made under another name in the directory that it goes to, as a part, and renamed when
// it is complete. So a kill leaves its place as it was or complete, and at most a part beside it.
// Against power cuts the file is flushed before it is renamed, for its content, and after, for its
// name, which file systems write along with it. Flush() of a directory waits for its whole file
// system, so that serves only many files at once.
#pragma once

#include <string>
#include <vector>

namespace torvane {

// The full path of the running executable, as the platform gives it; empty when it cannot.
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

// True when path leads to nothing, links followed; false when that is unknown.
bool IsMissing(const std::string& path);

// True when path itself is a directory. Links are not followed: one to a directory gives false.
bool DirectoryExists(const std::string& path);

// True when path itself is a link, and leads to a directory.
bool LinksToDirectory(const std::string& path);

// True when both lead to files, not one file, with the same bytes; false when that is unknown.
bool IsCopyOf(const std::string& path, const std::string& original);

// True when both paths, links followed, lead to the same file system.
bool ShareFileSystem(const std::string& path, const std::string& other);

// Removes a file, or a link and not what it points to; false on failure and for a directory.
bool DeleteFile(const std::string& path);

// The names of all entries but "." and "..", in ascending byte order; none, or not all, on failure.
std::vector<std::string> ListDirectory(const std::string& directory);

// The names of ListDirectory that match the shell pattern. Letter case is ignored, "*" and "?"
// match a leading dot, and a backslash is an ordinary character.
std::vector<std::string> SearchDirectory(const std::string& directory, const std::string& pattern);

// Creates the directory and its missing parents with the mode 0755 less the creation mask; false at
// the first one that cannot be created. The path is taken as absolute, with or without a leading
// "/". Whatever exists already is accepted, so true does not say that path is a directory.
bool MakeDirectory(const std::string& path);

// Copies the bytes and permission bits of a file, links followed, creating missing parents of the
// destination (taken as absolute). Links at the destination are followed and stay; a file there is
// replaced, a read-only one too, and anything else fails the copy. A link to a directory is copied
// as a link, in place of anything but a directory.
//   true   complete: on the disk (a link need not be), or both are one file
//   false  failed: the place is as it was
//   false  failed, but complete: its permissions cannot be applied, or its name cannot be flushed
// Unless it is empty, flushedLater is a directory whose file system the caller flushes: a power cut
// before that may cut short a copy on that file system.
bool CopyFile(const std::string& source, const std::string& destination,
              const std::string& flushedLater = "");

// Copies every file below a directory to the same relative path below destination, and directories
// only as their parents. Links are never entered; a directory that cannot be listed counts as
// empty. False when source is no directory, and at the first failure, which ends the copy.
bool CopyDirectory(const std::string& source, const std::string& destination);

// Like CopyDirectory, but all or nothing, where nothing is at destination (without a trailing "/").
// Where anything is, even a link to nowhere, it is CopyDirectory.
bool CopyWholeDirectory(const std::string& source, const std::string& destination);

// True when the path's last name is that of a part, of this process or, with "." and its number at
// the end, of another one. So ".Torvane Odrel.parts" is none.
bool IsPart(const std::string& path);

// Adds to the name of this process's parts, where others may be making theirs.
void AddToPartName(const std::string& suffix);

// Removes what has the name of this process's parts from the directory; false when it stays.
bool DeletePart(const std::string& directory);

// Stores the whole mode word, file type included, of what path leads to; if not, returns false.
bool GetPermissions(const std::string& path, int* mode);

// Applies the permission bits of mode (octal 07777) to what path leads to; false on failure.
bool SetPermissions(const std::string& path, int mode);

// Waits until the file that path leads to, or a directory's whole file system, is on the disk. True
// also when there is no way to do it, or when path may not be read.
bool Flush(const std::string& path);

// Waits, so many seconds at most, until no other process holds the directory, then holds it until
// this one ends; programs that it starts do not. False when the time is over, and at once when path
// is no directory that can be opened, or its file system has no locks.
bool LockDirectory(const std::string& path, int seconds);

}  // namespace torvane

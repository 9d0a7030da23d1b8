// Questions about files, and copies of them. Nothing here throws for a failed system call. Only the
// copy functions write lines, to standard error, those of success too.
//
// A copy is made beside its place, in the same directory under a name of its own (its part), and
// moved there by one rename when every byte of it is on the disk. So a kill or a power cut leaves
// the place as it was, or the whole copy in it, and at most a part beside it.
#pragma once

#include <filesystem>
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

// What is at path itself, links not followed: not_found for nothing, none when it cannot be told.
std::filesystem::file_type TypeAt(const std::string& path);

// True when path itself is a directory. Links are not followed: one to a directory gives false.
bool DirectoryExists(const std::string& path);

// True when path itself is a link, and leads to a directory.
bool LinksToDirectory(const std::string& path);

// True when both paths, links followed, lead to files with the same bytes, which are not one and
// the same file. False also when that cannot be told.
bool IsCopyOf(const std::string& path, const std::string& original);

// Removes a file, or a link and not what it points to; false on failure and for a directory.
bool DeleteFile(const std::string& path);

// The names of all entries but "." and "..", in ascending byte order; empty on failure.
std::vector<std::string> ListDirectory(const std::string& directory);

// The names of ListDirectory that match the shell pattern. Letter case is ignored, "*" and "?"
// match a leading dot, and a backslash is an ordinary character.
std::vector<std::string> SearchDirectory(const std::string& directory, const std::string& pattern);

// Creates the directory and its missing parents with the mode 0755 less the creation mask; false at
// the first one that cannot be created. The path is taken as absolute, with or without a leading
// "/". Whatever exists already is accepted, so true does not say that path is a directory.
bool MakeDirectory(const std::string& path);

// Creates an empty file of the mode 0600, where the file system has modes, in place of a file or a
// link; false when that fails.
bool CreateFile(const std::string& path);

// True when entries of the directory, links followed, may be made and removed.
bool MayChange(const std::string& directory);

// Copies the bytes and permission bits of a file, links followed, creating missing parents of the
// destination (taken as absolute). The copy takes the place of a file or of nothing; links there
// are followed and stay. A link to a directory is copied as a link, and takes the place of a file
// or a link. Anything else fails and is not opened, at either end. True when the whole copy is in
// its place and was flushed to the disk. What failed leaves the place as it was, with two
// exceptions: a whole file takes it without the permissions that cannot be applied, and in a
// directory that may not be changed a file is written itself. A copy onto itself succeeds.
bool CopyFile(const std::string& source, const std::string& destination);

// Copies as CopyFile does, but does not flush: a power cut may leave any part of the bytes.
bool CopyFileUnflushed(const std::string& source, const std::string& destination);

// Copies every file below a directory to the same relative path below destination; directories come
// into being only as their parents. Links are never entered; a directory that cannot be listed
// counts as empty. False when source is no directory, and at the first file that fails; what was
// copied before stays.
bool CopyDirectory(const std::string& source, const std::string& destination);

// Copies as CopyDirectory does, but all or nothing where nothing is at destination, a link neither.
// True also when another process has put a directory there meanwhile, which stays.
bool CopyWholeDirectory(const std::string& source, const std::string& destination);

// True when a part, of any process, has this name.
bool IsPartName(const std::string& name);

// Adds to the name of this process's parts, which other processes may be making under it too.
void AddToPartName(const std::string& suffix);

// Removes this process's part from the directory, links to it followed, whatever it is; true when
// there is none.
bool DeletePart(const std::string& directory);

// Stores the whole mode word, file type included, of what path leads to; if not, returns false.
bool GetPermissions(const std::string& path, int* mode);

// Applies the permission bits of mode (octal 07777) to what path leads to; false on failure.
bool SetPermissions(const std::string& path, int mode);

// Waits until the file that path leads to, or the whole file system of a directory, is on the disk.
// False when that fails; true also when there is no way to do it, or it may not be read.
bool Flush(const std::string& path);

// Flushes a file, unless it is on the file system of the directory, links of both followed.
bool FlushElsewhere(const std::string& path, const std::string& directory);

// Waits at most so many seconds until no other process holds the directory, then holds it for the
// rest of this process, programs that it starts excluded. False when the wait was too short and, at
// once, where the file system has no locks or path leads to no directory.
bool LockDirectory(const std::string& path, int seconds);

}  // namespace torvane

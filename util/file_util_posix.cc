#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <ftw.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <set>

#include "util/file_util.h"
#include "util/string_util.h"

namespace torvane {

namespace {

int DirEntryFilter(const dirent* entry) {
  return std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0;
}

int RemoveEntry(const char* path, const struct stat* /*info*/, int /*type*/, FTW* /*position*/) {
  return std::remove(path);
}

// True for the errors of file systems that have no way to flush.
bool CannotFlush(int error) {
  const std::set<int> errors = {EINVAL, ENOSYS, ENOTSUP, EOPNOTSUPP, ENOTTY};
  return errors.count(error) != 0;
}

// Both return an error number, 0 when done.
#ifdef __APPLE__
int FlushFile(int file) {
  // fsync leaves the bytes in the drive's own cache.
  if (fcntl(file, F_FULLFSYNC) == 0) return 0;
  return !CannotFlush(errno) || fsync(file) != 0 ? errno : 0;
}
int FlushFileSystem(int file) {
  return fsync_volume_np(file, SYNC_VOLUME_FULLSYNC | SYNC_VOLUME_WAIT);
}
#else
int FlushFile(int file) { return fsync(file) == 0 ? 0 : errno; }
int FlushFileSystem(int file) { return syncfs(file) == 0 ? 0 : errno; }
#endif

}  // namespace

bool FileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool IsMissing(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) != 0 && (errno == ENOENT || errno == ENOTDIR || errno == ELOOP);
}

bool DirectoryExists(const std::string& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool DeleteFile(const std::string& path) { return unlink(path.c_str()) == 0; }

bool DeleteTree(const std::string& path) {
  constexpr int openAtOnce = 16;  // of the directories; their depth has no limit
  constexpr int flags = FTW_DEPTH | FTW_MOUNT | FTW_PHYS;
  return nftw(path.c_str(), RemoveEntry, openAtOnce, flags) == 0 || errno == ENOENT;
}

std::vector<std::string> ListDirectory(const std::string& directory) {
  std::vector<std::string> names;
  dirent** entries = nullptr;
  const int count = scandir(directory.c_str(), &entries, DirEntryFilter, alphasort);
  if (count < 0) return names;

  names.reserve(count);
  for (int i = 0; i < count; ++i) {
    names.emplace_back(entries[i]->d_name);
    std::free(entries[i]);
  }
  std::free(entries);
  return names;
}

std::vector<std::string> SearchDirectory(const std::string& directory, const std::string& pattern) {
  std::vector<std::string> matches;
  for (const std::string& name : ListDirectory(directory)) {
    if (fnmatch(pattern.c_str(), name.c_str(), FNM_NOESCAPE | FNM_CASEFOLD) == 0)
      matches.push_back(name);
  }
  return matches;
}

bool MakeDirectory(const std::string& path) {
  std::vector<std::string> components;
  Tokenize(path, "/", &components);

  std::string prefix;
  for (const std::string& component : components) {
    prefix += "/" + component;
    if (mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST) return false;
  }
  return true;
}

bool GetPermissions(const std::string& path, int* mode) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return false;
  *mode = static_cast<int>(info.st_mode);
  return true;
}

bool SetPermissions(const std::string& path, int mode) {
  return chmod(path.c_str(), static_cast<mode_t>(mode)) == 0;
}

void OpenPrivate(const std::string& path, std::ofstream* stream) {
  const mode_t mask = umask(077);
  stream->open(path, std::ios::binary | std::ios::trunc);
  umask(mask);
  if (stream->is_open()) SetPermissions(path, 0600);  // also when it was there before
}

bool CanMove(const std::string& from, const std::string& to) {
  struct stat one, other;
  return stat(from.c_str(), &one) == 0 && stat(to.c_str(), &other) == 0 && S_ISDIR(one.st_mode) &&
         S_ISDIR(other.st_mode) && one.st_dev == other.st_dev &&
         access(from.c_str(), W_OK | X_OK) == 0 && access(to.c_str(), W_OK | X_OK) == 0;
}

bool Flush(const std::string& path, const std::string& destination) {
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  struct stat info = {};
  int error = file >= 0 && fstat(file, &info) == 0 ? 0 : errno;
  if (error == 0) error = S_ISDIR(info.st_mode) ? FlushFileSystem(file) : FlushFile(file);
  close(file);
  if (error == 0 || CannotFlush(error)) return true;
  std::cerr << "Failed to write \"" << destination << "\" to the disk" << std::endl;
  return false;
}

bool LockDirectory(const std::string& path) {
  const int directory = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  return directory >= 0 && flock(directory, LOCK_EX) == 0;  // held as long as it is open
}

}  // namespace torvane

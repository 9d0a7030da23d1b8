#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "util/file_util.h"
#include "util/string_util.h"

namespace torvane {

namespace {

int DirEntryFilter(const dirent* entry) {
  return std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0;
}

// True for the errors of file systems that have no way to flush.
bool CannotFlush(int error) {
  return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EOPNOTSUPP ||
         error == ENOTTY;
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
  return stat(path.c_str(), &info) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool DirectoryExists(const std::string& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool ShareFileSystem(const std::string& path, const std::string& other) {
  struct stat info, others;
  return stat(path.c_str(), &info) == 0 && stat(other.c_str(), &others) == 0 &&
         info.st_dev == others.st_dev;
}

bool DeleteFile(const std::string& path) { return unlink(path.c_str()) == 0; }

std::vector<std::string> ListDirectory(const std::string& directory) {
  std::vector<std::string> names;
  dirent** entries = nullptr;
  const int count = scandir(directory.c_str(), &entries, DirEntryFilter, alphasort);
  if (count > 0) names.reserve(count);
  for (int i = 0; i < count; ++i) {
    names.emplace_back(entries[i]->d_name);
    std::free(entries[i]);
  }
  std::free(entries);
  return names;
}

std::vector<std::string> SearchDirectory(const std::string& directory, const std::string& pattern) {
  std::vector<std::string> matches;
  for (const std::string& name : ListDirectory(directory))
    if (fnmatch(pattern.c_str(), name.c_str(), FNM_NOESCAPE | FNM_CASEFOLD) == 0)
      matches.push_back(name);
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

bool Flush(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return errno == EACCES || errno == EPERM;
  struct stat info = {};
  fstat(file, &info);
  const int error = S_ISDIR(info.st_mode) ? FlushFileSystem(file) : FlushFile(file);
  close(file);
  return error == 0 || CannotFlush(error);
}

bool LockDirectory(const std::string& path, int seconds) {
  const int directory = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  // For a directory that could not be opened flock fails as it does where there are no locks.
  while (flock(directory, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;  // never closed, so held until the process ends
}

}  // namespace torvane

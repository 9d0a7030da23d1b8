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

#ifdef __APPLE__
// macOS cannot flush one file system alone.
int syncfs(int /*file*/) {
  sync();
  return 0;
}
#endif

}  // namespace

bool FileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool DirectoryExists(const std::string& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool DeleteFile(const std::string& path) { return unlink(path.c_str()) == 0; }

bool DeleteTree(const std::string& path) {
  struct stat info;
  if (lstat(path.c_str(), &info) != 0) return errno == ENOENT || errno == ENOTDIR;
  if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) return true;
  // nftw walks deeper than it holds directories open; it opens the upper ones again.
  constexpr int openDirectories = 16;
  return nftw(path.c_str(), RemoveEntry, openDirectories, FTW_DEPTH | FTW_PHYS) == 0;
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
  int mode = 0;  // of a file that was there before, perhaps
  if (stream->is_open() && GetPermissions(path, &mode) && (mode & 077) != 0)
    SetPermissions(path, 0600);
}

bool Flush(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0 && (errno == ENOENT || errno == ENOTDIR)) return true;
  const bool flushed = (DirectoryExists(path) ? syncfs(file) : fsync(file)) == 0;
  close(file);
  if (!flushed) std::cerr << "Failed to write \"" << path << "\" to the disk" << std::endl;
  return flushed;
}

void LockDirectory(const std::string& path) {
  const int directory = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (directory >= 0) flock(directory, LOCK_EX);  // held as long as it is open
}

}  // namespace torvane

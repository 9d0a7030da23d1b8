#include <dirent.h>
#include <fnmatch.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

}  // namespace

bool FileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool DirectoryExists(const std::string& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool DeleteFile(const std::string& path) { return unlink(path.c_str()) == 0; }

bool DeleteTree(const std::string& path) {
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

}  // namespace torvane

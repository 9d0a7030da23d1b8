#include <CoreServices/CoreServices.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

namespace {

// The variable's value when it holds an absolute path, else the empty string.
std::string AbsolutePathIn(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && value[0] == '/' ? value : "";
}

// The path has no "/" at its end, unless it is the root; empty when no home directory is known.
std::string XdgDataDirectory() {
  std::string directory = AbsolutePathIn("XDG_DATA_HOME");
  if (directory.empty()) {
    const std::string home = AbsolutePathIn("HOME");
    if (home.empty()) return "";
    directory = home + "/.local/share";
  }
  while (directory.size() > 1 && directory.back() == '/') directory.pop_back();
  return directory;
}

}  // namespace

OSErr FSFindFolder(std::int16_t /*domain*/, OSType /*type*/, Boolean /*create*/, FSRef* folder) {
  const std::string directory = XdgDataDirectory();
  struct stat info;
  if (stat(directory.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return fnfErr;
  folder->path = directory;
  return noErr;
}

OSStatus FSRefMakePath(const FSRef* folder, UInt8* path, UInt32 size) {
  if (folder->path.size() >= size) return pathTooLongErr;
  std::memcpy(path, folder->path.c_str(), folder->path.size() + 1);
  return noErr;
}

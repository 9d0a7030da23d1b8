#include <CoreServices/CoreServices.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

namespace {

// Has no "/" at its end, unless it is the root; empty when no home directory is known.
std::string XdgDataDirectory() {
  const char* data = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  std::string directory;
  if (data != nullptr && data[0] == '/')
    directory = data;
  else if (home != nullptr && home[0] == '/')
    directory = std::string(home) + "/.local/share";
  while (directory.size() > 1 && directory.back() == '/') directory.pop_back();
  return directory;
}

}  // namespace

OSErr FSFindFolder(std::int16_t /*domain*/, OSType /*type*/, Boolean /*create*/, FSRef* folder) {
  const std::string directory = XdgDataDirectory();
  struct stat info;
  if (stat(directory.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return -43;  // file not found
  folder->path = directory;
  return noErr;
}

OSStatus FSRefMakePath(const FSRef* folder, UInt8* path, UInt32 size) {
  if (folder->path.size() >= size) return -2110;  // path too long
  std::memcpy(path, folder->path.c_str(), folder->path.size() + 1);
  return noErr;
}

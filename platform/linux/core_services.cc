#include <CoreServices/CoreServices.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

// Has no "/" at its end, unless it is the root; empty when no home directory is known.
std::string XdgDataDirectory() {
  for (const auto& [variable, below] :
       {std::pair("XDG_DATA_HOME", ""), {"HOME", "/.local/share"}}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || value[0] != '/') continue;
    std::string directory = std::string(value) + below;
    while (directory.size() > 1 && directory.back() == '/') directory.pop_back();
    return directory;
  }
  return "";
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

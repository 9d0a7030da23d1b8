#include <CoreServices/CoreServices.h>
#include <mach-o/dyld.h>

#include <cstdint>
#include <vector>

#include "util/file_util.h"

namespace torvane {

std::string ExecutableFile() {
  std::uint32_t size = 1024;
  std::vector<char> buffer(size);
  int result = _NSGetExecutablePath(buffer.data(), &size);
  if (result == -1) {
    buffer.assign(std::size_t{size} + 1, '\0');
    result = _NSGetExecutablePath(buffer.data(), &size);
  }
  return result == 0 ? buffer.data() : "";
}

std::string UserDataDirectory() {
  FSRef folder;
  if (FSFindFolder(kUserDomain, kApplicationSupportFolderType, kDontCreateFolder, &folder) != noErr)
    return "";
  UInt8 path[1024];
  if (FSRefMakePath(&folder, path, sizeof(path)) != noErr) return "";
  return reinterpret_cast<const char*>(path);
}

}  // namespace torvane

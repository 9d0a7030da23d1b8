#include <CoreServices/CoreServices.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

OSStatus FSFindFolder(std::int16_t /*domain*/, UInt32 /*type*/, bool /*create*/, FSRef* folder) {
  const char* data = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  folder->path = home != nullptr && home[0] == '/' ? std::string(home) + "/.local/share" : "";
  if (data != nullptr && data[0] == '/') folder->path = data;
  while (folder->path.size() > 1 && folder->path.back() == '/') folder->path.pop_back();

  struct stat info;
  return stat(folder->path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) ? noErr : -43;
}

OSStatus FSRefMakePath(const FSRef* folder, UInt8* path, UInt32 size) {
  if (folder->path.size() >= size) return -2110;  // path too long
  std::memcpy(path, folder->path.c_str(), folder->path.size() + 1);
  return noErr;
}

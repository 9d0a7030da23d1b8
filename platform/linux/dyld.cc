#include <mach-o/dyld.h>

#include <cstring>
#include <filesystem>

int _NSGetExecutablePath(char* buffer, std::uint32_t* size) {
  std::error_code error;
  const std::string path = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return 1;

  if (path.size() >= *size) {
    *size = static_cast<std::uint32_t>(path.size()) + 1;
    return -1;
  }
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  return 0;
}

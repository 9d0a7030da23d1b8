#include <mach-o/dyld.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

int _NSGetExecutablePath(char* buffer, std::uint32_t* size) {
  std::error_code error;
  const std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
  if (error) return 1;

  const std::size_t needed = path.size() + 1;
  if (*size < needed) {
    *size = static_cast<std::uint32_t>(needed);
    return -1;
  }
  std::memcpy(buffer, path.c_str(), needed);
  return 0;
}

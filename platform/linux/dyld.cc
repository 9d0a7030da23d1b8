#include <limits.h>
#include <mach-o/dyld.h>
#include <unistd.h>

#include <cstring>

int _NSGetExecutablePath(char* buffer, std::uint32_t* size) {
  char path[PATH_MAX];  // the kernel reports no longer one
  const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
  if (length < 0) return 1;

  if (*size <= static_cast<std::uint32_t>(length)) {
    *size = static_cast<std::uint32_t>(length) + 1;
    return -1;
  }
  std::memcpy(buffer, path, length);
  buffer[length] = '\0';
  return 0;
}

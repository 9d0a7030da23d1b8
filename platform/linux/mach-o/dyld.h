// The dynamic loader's query for the running executable, answered on Linux.
#pragma once

#include <cstdint>

// Stores the executable's NUL-terminated path and returns 0; returns -1 and stores the size needed
// (bytes, NUL included) in *size when the buffer is smaller, 1 when the kernel reports no path.
int _NSGetExecutablePath(char* buffer, std::uint32_t* size);

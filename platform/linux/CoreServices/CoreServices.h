// The folder lookup of CoreServices, answered on Linux with the XDG data directory.
#pragma once

#include <cstdint>
#include <string>

using UInt8 = std::uint8_t;
using UInt32 = std::uint32_t;
using OSStatus = std::int32_t;

struct FSRef {
  std::string path;
};

constexpr std::int16_t kUserDomain = -32763;
constexpr UInt32 kApplicationSupportFolderType = 0x61737570;  // 'asup'
constexpr bool kDontCreateFolder = false;

constexpr OSStatus noErr = 0;

// Refers *folder to the user's XDG data directory, whatever domain and type are given, and returns
// noErr; an error code when it is missing or no directory. Never creates it. Links are followed.
OSStatus FSFindFolder(std::int16_t domain, UInt32 type, bool create, FSRef* folder);

// Stores the folder's NUL-terminated path in a buffer of size bytes; noErr or an error code.
OSStatus FSRefMakePath(const FSRef* folder, UInt8* path, UInt32 size);

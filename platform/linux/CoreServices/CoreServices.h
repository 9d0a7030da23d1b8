// The folder lookup of CoreServices, answered on Linux with the XDG data directory.
#pragma once

#include <cstdint>
#include <string>

using Boolean = unsigned char;
using UInt8 = std::uint8_t;
using UInt32 = std::uint32_t;
using OSErr = std::int16_t;
using OSStatus = std::int32_t;
using OSType = std::uint32_t;

struct FSRef {
  std::string path;
};

constexpr std::int16_t kUserDomain = -32763;
constexpr OSType kApplicationSupportFolderType = 0x61737570;  // 'asup'
constexpr Boolean kDontCreateFolder = false;

constexpr OSErr noErr = 0;

// Refers *folder to the user's XDG data directory, whatever domain and type are given, and returns
// noErr; an error code when it is missing or no directory. Never creates it. Links are followed.
OSErr FSFindFolder(std::int16_t domain, OSType type, Boolean create, FSRef* folder);

// Stores the folder's NUL-terminated path in a buffer of size bytes; noErr or an error code.
OSStatus FSRefMakePath(const FSRef* folder, UInt8* path, UInt32 size);

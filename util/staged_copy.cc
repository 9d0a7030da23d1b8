#include "util/staged_copy.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <system_error>

namespace fs = std::filesystem;

namespace torvane {

namespace {

// CopyFile or CopyDirectory.
using Copy = CopyResult (*)(const std::string& source, const std::string& destination,
                            const std::string& path);

// What is at path, links not followed.
fs::file_type TypeAt(const std::string& path) {
  std::error_code error;
  return fs::symlink_status(path, error).type();
}

CopyResult CopyInPlace(Copy copy, const std::string& source, const std::string& destination,
                       const std::string& failure) {
  CopyResult result = copy(source, destination, destination);
  if (result.made == Made::whole && !Flush(destination, destination)) result = {false, Made::part};
  if (!result.success) std::cerr << failure << std::endl;
  if (result.made != Made::part) return result;
  // The target of a link goes and the link stays, because the copy wrote through it.
  std::error_code error;
  if (!DeleteTree(fs::canonical(destination, error)))
    std::cerr << "Failed to remove incomplete \"" << destination << "\"" << std::endl;
  return result;
}

CopyResult Stage(Copy copy, const std::string& source, const std::string& destination,
                 const std::string& aside, const std::string& failure, WhenWhole whenWhole) {
  const fs::file_type there = TypeAt(destination);
  const bool canMove = there == fs::file_type::not_found ||
                       (there == fs::file_type::regular && !DirectoryExists(source));
  if (!canMove || aside.empty() || TypeAt(aside) != fs::file_type::not_found)
    return CopyInPlace(copy, source, destination, failure);

  CopyResult result = copy(source, destination, aside);
  if (result.made == Made::whole && whenWhole == WhenWhole::flushAndMove &&
      !Flush(aside, destination))
    result = {false, Made::part};
  const fs::file_type now = TypeAt(destination);
  if (now != there && now != fs::file_type::not_found) result = {false, Made::nothing};

  const bool move =
      whenWhole != WhenWhole::remove && (result.made == Made::whole || result.made == Made::link);
  const bool moved = move && std::rename(aside.c_str(), destination.c_str()) == 0;
  if (!moved) DeleteTree(aside);
  if (move && !moved) return CopyInPlace(copy, source, destination, failure);
  if (!result.success) std::cerr << failure << std::endl;
  return result;
}

}  // namespace

CopyResult StageFile(const std::string& source, const std::string& destination,
                     const std::string& aside, const std::string& failure, WhenWhole whenWhole) {
  // The parents of a file are made before it is copied, those of a tree's files aside.
  const std::string parent = fs::path(destination).parent_path();
  const bool canMove = MakeDirectory(parent) && CanMove(fs::path(aside).parent_path(), parent);
  return Stage(CopyFile, source, destination, canMove ? aside : "", failure, whenWhole);
}

CopyResult StageDirectory(const std::string& source, const std::string& destination,
                          const std::string& aside, const std::string& failure) {
  return Stage(CopyDirectory, source, destination, aside, failure, WhenWhole::flushAndMove);
}

}  // namespace torvane

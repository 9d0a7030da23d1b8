#include "util/staged_copy.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace fs = std::filesystem;

namespace torvane {

namespace {

// CopyFile or CopyDirectory.
using CopyFunction = Made (*)(const std::string& source, const std::string& destination,
                              const std::string& path);

// What is at path, links not followed.
fs::file_type TypeAt(const std::string& path) {
  std::error_code error;
  return fs::symlink_status(path, error).type();
}

bool IsWhole(Made made) { return made == Made::unprotected || made == Made::whole; }

Made CopyInPlace(CopyFunction function, const StagedCopy& copy) {
  const std::string& destination = copy.destination;
  Made made = function(copy.source, destination, destination);
  if (IsWhole(made) && !Flush(destination, destination)) made = Made::part;
  if (made < Made::whole) std::cerr << copy.failure << std::endl;
  // The target of a link goes and the link stays, because the copy wrote through it.
  std::error_code error;
  if (made == Made::part && !DeleteTree(fs::canonical(destination, error)))
    std::cerr << "Failed to remove incomplete \"" << destination << "\"" << std::endl;
  return made;
}

Made Stage(CopyFunction function, const StagedCopy& copy) {
  const fs::file_type there = TypeAt(copy.destination);
  Made made = function(copy.source, copy.destination, copy.aside);
  if (IsWhole(made) && copy.whenWhole == WhenWhole::flushAndMove &&
      !Flush(copy.aside, copy.destination))
    made = Made::part;
  const fs::file_type now = TypeAt(copy.destination);
  if (now != there && now != fs::file_type::not_found) made = Made::nothing;  // somebody's

  const bool move = copy.whenWhole != WhenWhole::remove && (IsWhole(made) || made == Made::link);
  const bool moved = move && std::rename(copy.aside.c_str(), copy.destination.c_str()) == 0;
  if (!moved) DeleteTree(copy.aside);
  if (move && !moved) return CopyInPlace(function, copy);
  if (made < Made::whole) std::cerr << copy.failure << std::endl;
  return made;
}

}  // namespace

Made StageFile(const StagedCopy& copy) {
  const fs::file_type there = TypeAt(copy.destination);
  const fs::path parent = fs::path(copy.destination).parent_path();
  const bool canMove = (there == fs::file_type::not_found || there == fs::file_type::regular) &&
                       TypeAt(copy.aside) == fs::file_type::not_found && MakeDirectory(parent) &&
                       CanMove(fs::path(copy.aside).parent_path(), parent);
  return canMove ? Stage(CopyFile, copy) : CopyInPlace(CopyFile, copy);
}

Made StageDirectory(const StagedCopy& copy) {
  // Both are in one directory, which is made with the parents of the tree's files.
  const bool canMove = TypeAt(copy.destination) == fs::file_type::not_found &&
                       TypeAt(copy.aside) == fs::file_type::not_found;
  return canMove ? Stage(CopyDirectory, copy) : CopyInPlace(CopyDirectory, copy);
}

}  // namespace torvane

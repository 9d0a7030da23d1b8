// Copies that are whole in their place, or not there at all.
//
// A copy is made aside, at a path that nothing else uses, flushed to the disk when it is whole, and
// moved into its place by one rename. So a kill or a power cut leaves nothing but what lies aside,
// for the next launch to remove, and a file in the place is replaced, never written into. Where a
// rename would not do, the copy is made in its place, and removed from there when it fails: when
// something but a file is there (links are followed), when the place is on another file system or
// its directory may not be written to, and when something lies aside already.
#pragma once

#include <string>

#include "util/file_util.h"

namespace torvane {

// What becomes of a copy that is whole: its caller may flush it with others, or make another one
// for the same place.
enum class WhenWhole { flushAndMove, move, remove };

struct StagedCopy {
  std::string source, destination;
  std::string aside;    // where it is made
  std::string failure;  // the line that follows the copy's own when it fails
  WhenWhole whenWhole = WhenWhole::flushAndMove;
};

// Copies as CopyFile and CopyDirectory do, aside first. A failed copy leaves the destination as it
// was, unless it had to be made there, and what somebody has put there meanwhile; unprotected files
// take their place. Returns how the copy has ended, also when it was removed again.
Made StageFile(const StagedCopy& copy);
Made StageDirectory(const StagedCopy& copy);

}  // namespace torvane

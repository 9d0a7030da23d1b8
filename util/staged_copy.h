// Copies that are whole in their place, or not there at all.
//
// A copy is made aside, at a path where nothing else ever lies. When it is whole, its bytes are
// flushed to the disk, and one rename moves it into its place: there is no moment at which a kill
// or a power cut could leave a part there, and what was there is replaced, never written into. A
// killed launch leaves nothing but what lies aside, which the next one removes.
//
// A copy is made in its place instead, and what a failure leaves of it removed, where a move would
// not do: when something but a file is there (the copy follows links), when the place is on another
// file system or its directory may not be written to, and when the path aside is not to be used.
#pragma once

#include <string>

#include "util/file_util.h"

namespace torvane {

// What becomes of a copy made aside once it is whole.
enum class WhenWhole {
  flushAndMove,
  move,    // the caller flushes it, with others
  remove,  // a further copy to the same place follows
};

// CopyFile and CopyDirectory with that promise: aside is the path where the copy is made, or empty
// when there is none. When the copy fails, the line failure follows the copy's own lines, and the
// destination stays as it was, unless the copy had to be made there. What somebody has put at the
// destination while it was copied stays as well. A whole file whose permissions could not be
// applied counts as failed but takes its place. Returns how the copy has ended; what it made is
// moved or gone by then.
CopyResult StageFile(const std::string& source, const std::string& destination,
                     const std::string& aside, const std::string& failure,
                     WhenWhole whenWhole = WhenWhole::flushAndMove);
CopyResult StageDirectory(const std::string& source, const std::string& destination,
                          const std::string& aside, const std::string& failure);

// Removes an incomplete copy, so that no later launch takes it for the whole; writes a line when it
// cannot. Removes the target of a link and keeps the link, because the copy wrote through it.
void RemovePart(const std::string& path);

}  // namespace torvane

// Starting other programs.
#pragma once

#include <string>
#include <vector>

namespace torvane {

// From now on a write to a closed pipe, or beyond the limit on file sizes, fails instead of ending
// this process. Programs that it starts get the dispositions of both signals that it had before.
void IgnoreWriteSignals();

// Starts the program at path as an independent process. It receives path and then arguments as its
// argument vector, and environment followed by this process's own environment, duplicates kept.
// False when no process could be created, or when the program is known after 1 millisecond not to
// be executable; an empty marker file then stays in the temporary directory. Not thread-safe.
bool SpawnProcess(const std::string& path, const std::vector<std::string>& arguments,
                  const std::vector<std::string>& environment);

}  // namespace torvane

// The steps of a launch, in their order. Before them main receives open requests and makes the
// application data directory, after them it starts the runtime. Failures are reported; only a
// missing package or runtime ends the launch.
#pragma once

#include <string>

// Makes path the document that the runtime is to open, in place of any earlier one.
void SetFileToOpen(std::string path);

// Waits a minute at most for other launches with the same data to end, and removes the parts that
// killed ones have left. Failing that, this launch's parts get a name of their own.
void TakeTurn();

// Brings the data of earlier releases along, and marks the old data directories that have arrived.
void MigrateUserData();

// Moves the web storage of the old page origin to the place of the new one.
void MigrateLocalStorage();

// Copies the bundle's app packages that the application data directory does not hold yet.
void PrimeUmoFile();

// The name of the app package to load, the greatest that fits the version file; empty when none.
std::string LatestOdrelUmoFile();

// Copies the bundle's greatest-named runtime, unless a directory or a link to one has its name.
void PrimeVEKRuntime();

// The path of the executable in the greatest-named runtime; empty when that has none or is a part.
std::string LatestVEKRuntime();

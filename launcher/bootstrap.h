// A launch, in the order of its steps. Each tells its own failures; only the two selections can end
// a launch, by finding nothing.
#pragma once

#include <string>

// The document that the runtime is told to open; empty when there is none.
extern std::string fileToOpen;

// Makes path that document, in place of any earlier one. Called by the platform layer.
void SetFileToOpen(std::string path);

// Makes launches with the same application data directory wait for each other, a minute at most,
// and removes what a killed one has left beside the copies that it was making.
void TakeTurn();

// Brings the data of earlier releases along, and marks the old data directories that have arrived.
void MigrateUserData();

// Moves the web storage of the old page origin to the place of the new one.
void MigrateLocalStorage();

// Copies the bundle's app packages that the application data directory does not hold yet.
void PrimeUmoFile();

// The name of the app package to load, the greatest that fits the version file; empty when none.
std::string LatestOdrelUmoFile();

// Copies the bundle's greatest-named runtime, unless a directory of its name is there already.
void PrimeVEKRuntime();

// The path of the executable in the greatest-named runtime; empty when that one has none.
std::string LatestVEKRuntime();

#include "launcher/bootstrap.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "platform/mac/bootstrap_mac.h"
#include "util/file_util.h"
#include "util/process_util.h"
#include "util/staged_copy.h"

namespace fs = std::filesystem;

// Start-up initialisation takes the globals in this order, before main. newDataDirName asks the
// platform for the user data directory and needs the names above it.
namespace {

const std::string orgName = "Torvane";
const std::string oldOrgName = "Torvane, Inc.";
const std::string dataDirName = "Torvane Odrel 2.2";
const std::string newDataDirName = torvane::ApplicationDataDirectory(orgName, dataDirName);
const std::string storageDirName = newDataDirName + "/Local Storage";
const std::string runtimeDirName = newDataDirName + "/runtime";
const std::string migratedFile = "migrated";

std::string fileToOpen;

const char* const oldDataDirNames[] = {"Torvane Odrel 2.0", "Torvane Odrel 2.1",
                                       "Torvane Odrel 2.2", nullptr};

// The name under which copies lie until they are whole, in the directory that they go to or below.
std::string partName = ".Torvane Odrel.part";

std::string PartIn(const std::string& directory) { return directory + "/" + partName; }

// Waits for other launches with the same data, and removes what a killed one has left aside. Where
// that cannot be done, it may be another launch's, and this one takes a name of its own.
void TakeTurn() {
  const bool locked = torvane::LockDirectory(newDataDirName);
  if (!locked) partName += "." + std::to_string(getpid());
  for (const std::string& directory : {newDataDirName, storageDirName, runtimeDirName})
    if (locked) torvane::DeleteTree(PartIn(directory));
}

// Creates an empty file on the disk; writes a line and returns false when it cannot.
bool Touch(const std::string& path) {
  if (std::ofstream(path).is_open()) return torvane::Flush(path, path);
  std::cerr << "Failed to touch \"" << path << "\"" << std::endl;
  return false;
}

// The data of an earlier release that this launch brings along.
struct Migration {
  std::string old;                 // the directory that holds it
  std::vector<std::string> newer;  // those of newer releases
  std::string marker;              // the file that marks it as migrated
  std::string memory;              // the one that remembers that it could not be marked
  bool repeated;       // tried by an earlier launch, so that the application has run since
  bool whole = false;  // every file has been copied
};

// True when a newer release has something else in the place of a link to a directory, or the other
// way round. The one would be copied through the link, or the link would find no place.
bool IsPassedOver(const std::string& relative, const Migration& migration) {
  const bool isLink = torvane::LinksToDirectory(migration.old + "/" + relative);
  for (const std::string& directory : migration.newer) {
    const std::string entry = directory + "/" + relative;
    if (!torvane::IsMissing(entry) && torvane::LinksToDirectory(entry) != isLink) return true;
  }
  return false;
}

// True when this launch will copy a newer release's file to the same place.
bool IsCopiedAgain(const std::string& relative, const Migration& migration) {
  std::error_code error;
  for (const std::string& directory : migration.newer) {
    const std::string file = directory + "/" + relative;
    if (!torvane::FileExists(directory + "/" + migratedFile) && fs::is_regular_file(file, error) &&
        std::ifstream(file).is_open())
      return true;
  }
  return false;
}

// Copies a file of an old data directory; false when that fails. A repeated migration leaves what
// is there already, because the application may have changed it, unless it is in *copied: this
// launch has put it there from an older release. The relative path is added to *copied.
bool MigrateFile(const std::string& relative, const Migration& migration,
                 std::set<std::string>* copied) {
  const std::string source = migration.old + "/" + relative;
  const std::string destination = newDataDirName + "/" + relative;
  const std::string failure = "Failed to copy \"" + source + "\" to \"" + destination + "\"";
  const bool replacesOlder = copied->count(relative) != 0;
  std::error_code error;
  const fs::file_status there = fs::symlink_status(destination, error);
  const bool isInTheWay = fs::is_directory(there) || fs::is_other(there);
  if (migration.repeated && !replacesOlder && !isInTheWay &&
      (fs::is_regular_file(there) || !torvane::IsMissing(destination))) {
    if (torvane::FileExists(destination)) return true;
    std::cerr << failure << std::endl;  // it cannot be told what is there
    return false;
  }

  // A first migration is flushed in the end. In a repeated one, an older file that a kill has left
  // in the place of a newer one would be taken for the application's.
  const auto whenWhole = !migration.repeated                  ? torvane::WhenWhole::move
                         : IsCopiedAgain(relative, migration) ? torvane::WhenWhole::remove
                                                              : torvane::WhenWhole::flushAndMove;
  const torvane::Made made =
      torvane::StageFile({source, destination, PartIn(newDataDirName), failure, whenWhole});
  if (made >= torvane::Made::whole) copied->insert(relative);
  // No later launch may take the older release's copy for this one. A link to it stays.
  if (made == torvane::Made::part && replacesOlder)
    fs::remove(fs::canonical(destination, error), error);
  return made >= torvane::Made::whole;
}

// Copies the files below an old data directory, breadth first; false when one could not be copied.
bool MigrateDirectory(const Migration& migration, std::set<std::string>* copied) {
  bool success = true;
  std::vector<std::string> work = torvane::ListDirectory(migration.old);
  for (std::size_t k = 0; k < work.size(); ++k) {
    const std::string relative = work[k];
    if (fs::path(relative).filename() == partName || IsPassedOver(relative, migration)) continue;
    const std::string source = migration.old + "/" + relative;
    if (torvane::DirectoryExists(source)) {
      for (const std::string& name : torvane::ListDirectory(source))
        work.push_back(relative + "/" + name);
    } else if (!MigrateFile(relative, migration, copied)) {
      success = false;
    }
  }
  return success;
}

// The migrations that are due, of the oldest release first.
std::vector<Migration> DueMigrations() {
  constexpr int oldDataDirCount = 3;
  std::vector<Migration> migrations;
  std::vector<std::string> newer;
  for (int i = oldDataDirCount - 1; i >= 0; --i) {
    const std::string name = oldDataDirNames[i];
    const std::string old = torvane::ApplicationDataDirectory(oldOrgName, name);
    if (!torvane::DirectoryExists(old)) continue;
    const std::string marker = old + "/" + migratedFile;
    const std::string memory = newDataDirName + "/" + name + ".unmarked";
    if (torvane::FileExists(marker)) {
      torvane::DeleteFile(memory);
    } else {
      // Nothing is replaced either when it cannot be told whether the marker is there.
      const bool repeated = !torvane::IsMissing(marker) || !torvane::IsMissing(memory);
      migrations.insert(migrations.begin(), {old, newer, marker, memory, repeated});
    }
    newer.push_back(old);
  }
  return migrations;
}

// Brings the data of earlier releases along. A directory that cannot be marked is remembered: by
// the time of the next launch the application has run, and its files must not be replaced.
void MigrateUserData() {
  if (newDataDirName.empty()) return;  // unknown at start-up, though it may be known by now

  std::vector<Migration> migrations = DueMigrations();
  std::set<std::string> copied;
  bool isFlushDue = false;  // a later launch will leave out something that was copied
  for (Migration& migration : migrations) {
    std::cout << "Migrating application data from \"" << migration.old << "\" to \""
              << newDataDirName << "\"" << std::endl;
    migration.whole = MigrateDirectory(migration, &copied);
    isFlushDue = isFlushDue || migration.whole || !migration.repeated;
  }

  // They are marked together: a file that a killed launch has copied from one of them must not keep
  // out the newer file of another.
  const bool onDisk = !isFlushDue || torvane::Flush(newDataDirName, newDataDirName);
  for (const Migration& migration : migrations) {
    if (migration.whole && onDisk && Touch(migration.marker))
      torvane::DeleteFile(migration.memory);
    else if (!torvane::FileExists(migration.memory))
      Touch(migration.memory);
  }
}

// Moves the web storage of the old page origin to the place of the new one. The old file goes once
// its bytes are at the new place and in the backup.
void MigrateLocalStorage() {
  const std::string source = newDataDirName + "/qrc__0.localstorage";
  const std::string destination = storageDirName + "/umop__0.localstorage";
  const std::string backup = source + "_migrated";
  if (!torvane::FileExists(source) || torvane::FileExists(destination) ||
      !torvane::IsMissing(destination))
    return;

  std::cout << "Migrating localStorage from \"" << source << "\" to \"" << destination << "\""
            << std::endl;
  const std::string failure =
      "Failed to migrate localStorage \"" + source + "\" to \"" + destination + "\"";
  const std::string incomplete = "Failed to complete localStorage migration";
  constexpr auto whole = torvane::Made::whole;
  if (torvane::StageFile({source, destination, PartIn(storageDirName), failure}) < whole ||
      torvane::StageFile({source, backup, PartIn(newDataDirName), incomplete}) < whole)
    return;
  // The move to the destination must not be lost when the source is, which may lie on another disk.
  if (!torvane::Flush(destination, destination) || !torvane::DeleteFile(source))
    std::cerr << incomplete << std::endl;
}

// Copies the bundle's app packages that the application data directory does not hold yet.
void PrimeUmoFile() {
  const std::string bundle = torvane::ExecutableDirectory();
  const std::vector<std::string> packages = torvane::SearchDirectory(bundle, "mrd-*.umo");
  if (packages.empty()) std::cerr << "Unable to find an Odrel app package to prime" << std::endl;
  for (const std::string& name : packages) {
    const std::string destination = newDataDirName + "/" + name;
    std::cerr << "Priming " << destination << std::endl;
    if (torvane::FileExists(destination)) continue;
    torvane::StageFile({bundle + "/" + name, destination, PartIn(newDataDirName),
                        "Failed to prime Odrel app package \"" + name + "\""});
  }
}

// Copies the bundle's greatest-named runtime, unless a directory of its name is there already.
void PrimeVEKRuntime() {
  const std::string bundle = torvane::ExecutableDirectory();
  const std::vector<std::string> runtimes = torvane::SearchDirectory(bundle, "vek-*");
  if (runtimes.empty()) {
    std::cerr << "Unable to find a Vekara runtime to prime" << std::endl;
    return;
  }
  const std::string source = bundle + "/" + runtimes.back();
  const std::string destination = runtimeDirName + "/" + runtimes.back();
  if (torvane::DirectoryExists(destination)) return;
  torvane::StageDirectory({source, destination, PartIn(runtimeDirName),
                           "Failed to prime Vekara runtime \"" + source + "\""});
}

// The name of the app package to load, the greatest that fits the version file; empty when none.
std::string LatestOdrelUmoFile() {
  std::string path = newDataDirName + "/version.txt";
  if (!torvane::FileExists(path)) path = torvane::ExecutableDirectory() + "/version.txt";
  std::string version = "*";
  std::ifstream file(path);
  std::getline(file, version);  // changes nothing when the file could not be opened
  const std::vector<std::string> packages =
      torvane::SearchDirectory(newDataDirName, "mrd-" + version + ".umo");
  return packages.empty() ? "" : packages.back();
}

// The path of the executable in the greatest-named runtime; empty when that one has none.
std::string LatestVEKRuntime() {
  const std::vector<std::string> runtimes = torvane::SearchDirectory(runtimeDirName, "*");
  if (runtimes.empty() || runtimes.back().rfind(partName, 0) == 0) return "";
  const std::string executable =
      runtimeDirName + "/" + runtimes.back() + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
  return torvane::FileExists(executable) ? executable : "";
}

std::vector<std::string> RuntimeArguments(const std::string& packagePath, int argc, char** argv) {
  std::vector<std::string> arguments = {
      "--umo-entry-url=umop:///index.html?production", "--umo-file=" + packagePath,
      "--umo-enable-logging", "--umo-log-level=0", "--odrel=" + torvane::ExecutableFile()};
  if (!fileToOpen.empty()) arguments.push_back(fileToOpen);
  for (int i = 1; i < argc; ++i) arguments.emplace_back(argv[i]);
  arguments.emplace_back("--disable-accelerated-compositing");
  return arguments;
}

}  // namespace

void SetFileToOpen(std::string path) { fileToOpen = std::move(path); }

int main(int argc, char** argv) {
  torvane::IgnoreClosedPipes();
  PlatformSetup();
  if (!torvane::MakeDirectory(newDataDirName)) {
    std::cerr << "Failed to create Odrel app data directory \"" << newDataDirName << "\""
              << std::endl;
    return 1;
  }
  TakeTurn();
  std::cout << "Dianostics: ON" << std::endl;  // spelled so

  MigrateUserData();
  MigrateLocalStorage();
  PrimeUmoFile();
  const std::string packageName = LatestOdrelUmoFile();
  if (packageName.empty()) {
    std::cerr << "Unable to find an Odrel app package on the system" << std::endl;
    return 2;
  }
  const std::string packagePath = newDataDirName + "/" + packageName;
  std::cout << "Loading Odrel package \"" << packagePath << "\"" << std::endl;

  PrimeVEKRuntime();
  const std::string runtimeExecutable = LatestVEKRuntime();
  if (runtimeExecutable.empty()) {
    std::cerr << "Unable to find a Vekara runtime on the system" << std::endl;
    return 4;
  }
  std::cout << "Loading Vekara at \"" << runtimeExecutable << "\"" << std::endl;

  if (!torvane::SpawnProcess(runtimeExecutable, RuntimeArguments(packagePath, argc, argv), {})) {
    std::cerr << "Failed to launch Torvane Odrel" << std::endl;
    return 3;
  }
  return 0;
}

#include "launcher/bootstrap.h"

#include <unistd.h>

#include <fstream>
#include <iostream>
#include <set>

#include "platform/mac/bootstrap_mac.h"
#include "util/file_util.h"
#include "util/process_util.h"

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
const std::string oldStorageFile = "qrc__0.localstorage";
const std::string migratedFile = "migrated";

const char* const oldDataDirNames[] = {"Torvane Odrel 2.0", "Torvane Odrel 2.1",
                                       "Torvane Odrel 2.2", nullptr};

// Writes a file onto the disk; a line tells when it cannot.
bool Touch(const std::string& path, const std::string& content) {
  std::error_code error;
  const bool grows = fs::file_size(path, error) <= content.size();
  std::ofstream file(path, grows ? std::ios::in : std::ios::out);  // a kill must not empty it
  if ((file << content).flush() && torvane::Flush(path)) return true;
  std::cerr << "Failed to touch \"" << path << "\"" << std::endl;
  return false;
}

// The data of an earlier release that this launch brings along.
struct Migration {
  std::string old;                 // the directory that holds it
  std::vector<std::string> older;  // those of older releases
  std::vector<std::string> fresh;  // those of them that this launch migrates for the first time
  std::vector<std::string> newer;  // those of newer releases
  std::string memory;              // the file that lists what has arrived, until all has
  std::set<std::string> arrived;   // relative paths, those of directories with a "/" at the end
  bool isRemembered;               // the memory lists these
  bool repeated;                   // tried by an earlier launch: the application may have run since
  bool whole = true;               // everything has arrived
};

// The paths in a memory, each ended by a NUL. One that is no file itself has none.
std::set<std::string> ListedPaths(const std::string& memory) {
  std::set<std::string> paths;
  if (torvane::TypeAt(memory) != fs::file_type::regular) return paths;
  std::ifstream file(memory, std::ios::binary);
  for (std::string path; std::getline(file, path, '\0') && !file.eof();) paths.insert(path);
  return paths;
}

// The migrations that are due, of the oldest release first.
std::vector<Migration> DueMigrations() {
  std::vector<Migration> migrations;
  std::vector<std::string> older, fresh;
  for (int i = 0; i < 3; ++i) {
    const std::string old = torvane::ApplicationDataDirectory(oldOrgName, oldDataDirNames[i]);
    const std::string memory = newDataDirName + "/" + oldDataDirNames[i] + ".unmarked";
    const std::string marker = old + "/" + migratedFile;
    if (!torvane::DirectoryExists(old)) continue;
    for (Migration& migration : migrations) migration.newer.push_back(old);
    if (torvane::FileExists(marker)) {
      torvane::DeleteFile(memory);
    } else {
      const bool isRemembered = torvane::TypeAt(memory) != fs::file_type::not_found;
      // One whose marker cannot be told counts as tried before.
      const bool repeated = isRemembered || !torvane::IsMissing(marker);
      migrations.push_back(
          {old, older, fresh, {}, memory, ListedPaths(memory), isRemembered, repeated});
      if (!repeated) fresh.push_back(old);
    }
    older.push_back(old);
  }
  return migrations;
}

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

// True when an older release's file is in the place, unchanged, and no newer one's. Where this
// one's has arrived before, or when it is empty, only what this launch has just put there counts.
bool HoldsOlderCopy(const std::string& relative, const Migration& migration) {
  const std::string file = newDataDirName + "/" + relative;
  std::error_code error;
  const bool onlyFresh = migration.arrived.count(relative) != 0 || fs::is_empty(file, error);
  bool isOlder = false;
  for (const std::string& directory : onlyFresh ? migration.fresh : migration.older)
    isOlder = isOlder || torvane::IsCopyOf(file, directory + "/" + relative);
  for (const std::string& directory : migration.newer)
    isOlder = isOlder && !torvane::IsCopyOf(file, directory + "/" + relative);
  return isOlder;
}

// Brings a file of an old data directory along; false when that fails. A repeated migration leaves
// a file or a link that is there to the application, unless it is an older release's.
bool MigrateFile(const std::string& relative, const Migration& migration) {
  const std::string source = migration.old + "/" + relative;
  const std::string destination = newDataDirName + "/" + relative;
  const fs::file_type there = torvane::TypeAt(destination);
  // A launch that has not waited for this one may have brought it along meanwhile.
  const bool keepsFiles = migration.repeated || torvane::FileExists(migration.memory) ||
                          torvane::FileExists(migration.old + "/" + migratedFile);
  bool success = false;
  if (!keepsFiles)
    success = torvane::CopyFileUnflushed(source, destination, newDataDirName);
  else if (torvane::IsMissing(destination) || HoldsOlderCopy(relative, migration))
    success = torvane::CopyFile(source, destination);
  else
    success = torvane::FileExists(destination) &&
              (there == fs::file_type::regular || there == fs::file_type::symlink);
  if (success) return true;

  std::cerr << "Failed to copy \"" << source << "\" to \"" << destination << "\"" << std::endl;
  // This launch would move an older release's web storage to its place for good.
  if (relative == oldStorageFile && there == fs::file_type::regular &&
      HoldsOlderCopy(relative, migration) && !torvane::IsCopyOf(destination, source))
    torvane::DeleteFile(destination);
  return false;
}

// Brings the files below an old data directory along, breadth first, but for those that have
// arrived before. What an older release has just put into their place is replaced all the same.
void MigrateDirectory(Migration* migration) {
  std::vector<std::string> work = torvane::ListDirectory(migration->old);
  for (std::size_t k = 0; k < work.size(); ++k) {
    const std::string relative = work[k];
    if (torvane::IsPartName(relative.substr(relative.rfind('/') + 1))) continue;
    const std::string source = migration->old + "/" + relative;
    const bool isDirectory = torvane::DirectoryExists(source);
    const std::string listed = isDirectory ? relative + "/" : relative;
    if (migration->arrived.count(listed) != 0 && !HoldsOlderCopy(relative, *migration)) continue;

    const bool isPassedOver = IsPassedOver(relative, *migration);
    if (isDirectory && !isPassedOver) {
      for (const std::string& name : torvane::ListDirectory(source)) work.push_back(listed + name);
    } else if (isPassedOver || MigrateFile(relative, *migration)) {
      if (migration->arrived.insert(listed).second) migration->isRemembered = false;
    } else {
      if (migration->arrived.erase(listed) != 0) migration->isRemembered = false;
      migration->whole = false;
    }
  }
}

// Lists in the memory what has arrived. When the list is cut off, the rest is tried again.
void Remember(const Migration& migration) {
  const fs::file_type there = torvane::TypeAt(migration.memory);
  const bool canList = there == fs::file_type::regular || there == fs::file_type::not_found;
  if (migration.isRemembered || !canList) return;
  std::string paths;
  for (const std::string& path : migration.arrived) paths += path + '\0';
  Touch(migration.memory, paths);
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

std::string fileToOpen;

void SetFileToOpen(std::string path) { fileToOpen = std::move(path); }

void TakeTurn() {
  bool ownsParts = torvane::LockDirectory(newDataDirName, 60);
  if (ownsParts)
    for (const std::string& directory : {newDataDirName, storageDirName, runtimeDirName})
      ownsParts = torvane::DeletePart(directory) && ownsParts;
  if (!ownsParts) torvane::AddToPartName("." + std::to_string(getpid()));
}

void MigrateUserData() {
  if (newDataDirName.empty()) return;  // it could not be told at start-up

  std::vector<Migration> migrations = DueMigrations();
  bool isFlushDue = false;
  for (Migration& migration : migrations) {
    std::cout << "Migrating application data from \"" << migration.old << "\" to \""
              << newDataDirName << "\"" << std::endl;
    MigrateDirectory(&migration);
    isFlushDue = isFlushDue || !migration.isRemembered;
  }
  if (isFlushDue && !torvane::Flush(newDataDirName)) {
    std::cerr << "Failed to write \"" << newDataDirName << "\" to the disk" << std::endl;
    for (const Migration& migration : migrations)
      if (!migration.repeated) Touch(migration.memory, "");
    return;
  }
  // The memories first: what an older release has replaced is due again, also once that is marked.
  for (const Migration& migration : migrations)
    if (!migration.whole) Remember(migration);
  for (const Migration& migration : migrations) {
    if (migration.whole && Touch(migration.old + "/" + migratedFile, ""))
      torvane::DeleteFile(migration.memory);
    else if (migration.whole)
      Remember(migration);
  }
}

void MigrateLocalStorage() {
  const std::string source = newDataDirName + "/" + oldStorageFile;
  const std::string destination = storageDirName + "/umop__0.localstorage";
  if (!torvane::FileExists(source) || torvane::FileExists(destination)) return;

  const std::string paths = "\"" + source + "\" to \"" + destination + "\"";
  std::cout << "Migrating localStorage from " << paths << std::endl;
  // Nothing is replaced when it cannot be told whether it is there.
  if (!torvane::IsMissing(destination) || !torvane::CopyFile(source, destination)) {
    std::cerr << "Failed to migrate localStorage " << paths << std::endl;
    return;
  }
  if (!torvane::CopyFile(source, source + "_migrated") || !torvane::DeleteFile(source))
    std::cerr << "Failed to complete localStorage migration" << std::endl;
}

void PrimeUmoFile() {
  const std::string bundle = torvane::ExecutableDirectory();
  const std::vector<std::string> packages = torvane::SearchDirectory(bundle, "mrd-*.umo");
  if (packages.empty()) std::cerr << "Unable to find an Odrel app package to prime" << std::endl;
  for (const std::string& name : packages) {
    const std::string destination = newDataDirName + "/" + name;
    std::cerr << "Priming " << destination << std::endl;
    if (!torvane::FileExists(destination) && !torvane::CopyFile(bundle + "/" + name, destination))
      std::cerr << "Failed to prime Odrel app package \"" << name << "\"" << std::endl;
  }
}

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

void PrimeVEKRuntime() {
  const std::string bundle = torvane::ExecutableDirectory();
  const std::vector<std::string> runtimes = torvane::SearchDirectory(bundle, "vek-*");
  if (runtimes.empty()) {
    std::cerr << "Unable to find a Vekara runtime to prime" << std::endl;
    return;
  }
  const std::string source = bundle + "/" + runtimes.back();
  const std::string destination = runtimeDirName + "/" + runtimes.back();
  if (!torvane::DirectoryExists(destination) && !torvane::CopyWholeDirectory(source, destination))
    std::cerr << "Failed to prime Vekara runtime \"" << source << "\"" << std::endl;
}

std::string LatestVEKRuntime() {
  const std::vector<std::string> runtimes = torvane::SearchDirectory(runtimeDirName, "*");
  if (runtimes.empty() || torvane::IsPartName(runtimes.back())) return "";
  const std::string executable =
      runtimeDirName + "/" + runtimes.back() + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
  return torvane::FileExists(executable) ? executable : "";
}

int main(int argc, char** argv) {
  torvane::IgnoreWriteSignals();
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

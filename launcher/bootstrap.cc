#include "launcher/bootstrap.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

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
const std::string migratedFile = "migrated";
const std::string copyNotes = newDataDirName + "/.copying";

const char* const oldDataDirNames[] = {"Torvane Odrel 2.0", "Torvane Odrel 2.1",
                                       "Torvane Odrel 2.2", nullptr};

}  // namespace

std::string fileToOpen;

void SetFileToOpen(std::string path) { fileToOpen = std::move(path); }

namespace {

// True when nothing is at path, links followed; false also when that cannot be told.
bool IsMissing(const std::string& path) {
  std::error_code error;
  return fs::status(path, error).type() == fs::file_type::not_found;
}

// Creates an empty file; writes a line and returns false when it cannot.
bool Touch(const std::string& path) {
  if (std::ofstream(path).is_open()) return true;
  std::cerr << "Failed to touch \"" << path << "\"" << std::endl;
  return false;
}

// Removes the file or directory that a failed copy left at path, so that no later launch takes the
// part for the whole. A link at path stays, and what it leads to goes.
void RemovePart(const std::string& path) {
  std::error_code error;
  const fs::path part = fs::canonical(path, error);
  const bool removable = fs::is_regular_file(part, error) || fs::is_directory(part, error);
  if (removable && !torvane::DeleteTree(part))
    std::cerr << "Failed to remove incomplete \"" << path << "\"" << std::endl;
}

// Copies one file; when that fails, writes the failure line, leaves no part behind, returns false.
bool CopyWhole(const std::string& source, const std::string& destination,
               const std::string& failure) {
  bool incomplete = false;
  if (torvane::CopyFile(source, destination, &incomplete)) return true;
  std::cerr << failure << std::endl;
  if (incomplete) RemovePart(destination);
  return false;
}

// False, with a line, when what was written to the file or below the directory may be lost.
bool IsOnDisk(const std::string& path) {
  if (torvane::Flush(path)) return true;
  std::cerr << "Failed to write \"" << path << "\" to the disk" << std::endl;
  return false;
}

// Ends the notes of the copies under way, and removes these copies unless keep is true.
void EndCopies(bool keep) {
  if (!torvane::EndCopies(copyNotes, keep))
    std::cerr << "Failed to remove what \"" << copyNotes << "\" notes" << std::endl;
}

// Copies the files below an old data directory into the application data directory, breadth first;
// false when one could not be copied. A repeated migration leaves the files that are there already,
// unless this launch has put them there: *copied lists the relative paths that it has.
bool MigrateDirectory(const std::string& old, bool repeated, std::set<std::string>* copied) {
  bool success = true;
  std::vector<std::string> work = torvane::ListDirectory(old);
  for (std::size_t k = 0; k < work.size(); ++k) {
    const std::string relative = work[k];
    const std::string source = old + "/" + relative;
    if (torvane::DirectoryExists(source)) {
      for (const std::string& name : torvane::ListDirectory(source))
        work.push_back(relative + "/" + name);
      continue;
    }

    const std::string destination = newDataDirName + "/" + relative;
    if (repeated) {
      const bool isNew = IsMissing(destination) || copied->count(relative) != 0;
      // A directory in the place of the file is not the file: the copy is tried, and its failure
      // told.
      if (!isNew && !torvane::DirectoryExists(destination)) continue;
      if (isNew) torvane::NoteCopy(copyNotes, destination);
    }
    if (CopyWhole(source, destination,
                  "Failed to copy \"" + source + "\" to \"" + destination + "\""))
      copied->insert(relative);
    else
      success = false;
  }
  return success;
}

// The empty file that remembers an old data directory that could not be marked as migrated: the
// application has run by the time it is tried again.
std::string UnmarkedFile(const std::string& name) {
  return newDataDirName + "/" + name + ".unmarked";
}

// Brings the data of earlier releases along. The directories are marked together in the end: what a
// killed launch has copied from one of them must not keep the newer file of another from its place.
void MigrateUserData() {
  // Unknown at start-up; the platform may know the old data directories by now all the same.
  if (newDataDirName.empty()) return;

  constexpr int oldDataDirCount = 3;
  std::set<std::string> copied;
  std::map<std::string, bool> successes;  // of the migrations, by the old data directory's name
  for (int i = 0; i < oldDataDirCount; ++i) {
    const std::string name = oldDataDirNames[i];
    const std::string old = torvane::ApplicationDataDirectory(oldOrgName, name);
    const std::string marker = old + "/" + migratedFile;
    if (!torvane::DirectoryExists(old)) continue;
    if (torvane::FileExists(marker)) {
      torvane::DeleteFile(UnmarkedFile(name));
      continue;
    }

    std::cout << "Migrating application data from \"" << old << "\" to \"" << newDataDirName << "\""
              << std::endl;
    // When it cannot be told whether the marker is there, nothing is replaced either.
    const bool repeated = !IsMissing(marker) || !IsMissing(UnmarkedFile(name));
    successes[name] = MigrateDirectory(old, repeated, &copied);
  }
  if (successes.empty()) return;

  const bool onDisk = IsOnDisk(newDataDirName);
  EndCopies(onDisk);
  for (const auto& [name, success] : successes) {
    const std::string old = torvane::ApplicationDataDirectory(oldOrgName, name);
    if (success && onDisk && Touch(old + "/" + migratedFile))
      torvane::DeleteFile(UnmarkedFile(name));
    else
      Touch(UnmarkedFile(name));
  }
}

// Moves the web storage of the old page origin to the place of the new one. The old file goes once
// its bytes are at the new place and in the backup.
void MigrateLocalStorage() {
  const std::string source = newDataDirName + "/qrc__0.localstorage";
  const std::string destination = newDataDirName + "/Local Storage/umop__0.localstorage";
  const std::string backup = source + "_migrated";
  if (!torvane::FileExists(source) || !IsMissing(destination)) return;

  std::cout << "Migrating localStorage from \"" << source << "\" to \"" << destination << "\""
            << std::endl;
  torvane::NoteCopy(copyNotes, destination);
  const bool copied =
      CopyWhole(source, destination,
                "Failed to migrate localStorage \"" + source + "\" to \"" + destination + "\"");
  const bool keep = IsOnDisk(destination);
  if (copied && (!keep || !torvane::CopyFile(source, backup) || !IsOnDisk(backup) ||
                 !torvane::RemoveSource(copyNotes, source)))
    std::cerr << "Failed to complete localStorage migration" << std::endl;
  EndCopies(keep);
}

// Copies the bundle's app packages that the application data directory does not hold yet.
void PrimeUmoFile() {
  const std::string bundle = torvane::ExecutableDirectory();
  const std::vector<std::string> packages = torvane::SearchDirectory(bundle, "mrd-*.umo");
  if (packages.empty()) {
    std::cerr << "Unable to find an Odrel app package to prime" << std::endl;
    return;
  }
  for (const std::string& name : packages) {
    const std::string destination = newDataDirName + "/" + name;
    std::cerr << "Priming " << destination << std::endl;
    if (torvane::FileExists(destination)) continue;
    if (IsMissing(destination)) torvane::NoteCopy(copyNotes, destination);
    CopyWhole(bundle + "/" + name, destination,
              "Failed to prime Odrel app package \"" + name + "\"");
    EndCopies(IsOnDisk(destination));
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
  const std::string destination = newDataDirName + "/runtime/" + runtimes.back();
  if (torvane::DirectoryExists(destination)) return;

  const bool isNew = IsMissing(destination);
  if (isNew) torvane::NoteCopy(copyNotes, destination);
  const bool copied = torvane::CopyDirectory(source, destination);
  if (!copied) {
    std::cerr << "Failed to prime Vekara runtime \"" << source << "\"" << std::endl;
    if (isNew) RemovePart(destination);
  }
  EndCopies(!copied || IsOnDisk(newDataDirName));
}

// The name of the app package to load, the greatest that fits the version file; empty when none.
std::string LatestOdrelUmoFile() {
  std::string version = "*";
  for (const std::string& directory : {newDataDirName, torvane::ExecutableDirectory()}) {
    const std::string path = directory + "/version.txt";
    if (!torvane::FileExists(path)) continue;
    std::ifstream file(path);
    if (file.is_open()) std::getline(file, version);
    break;
  }

  const std::vector<std::string> packages =
      torvane::SearchDirectory(newDataDirName, "mrd-" + version + ".umo");
  return packages.empty() ? "" : packages.back();
}

// The path of the executable in the greatest-named runtime; empty when that one has none.
std::string LatestVEKRuntime() {
  const std::string runtimeDir = newDataDirName + "/runtime";
  const std::vector<std::string> runtimes = torvane::SearchDirectory(runtimeDir, "*");
  if (runtimes.empty()) return "";
  const std::string executable =
      runtimeDir + "/" + runtimes.back() + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
  return torvane::FileExists(executable) ? executable : "";
}

std::vector<std::string> RuntimeArguments(const std::string& package, int argc, char** argv) {
  std::vector<std::string> arguments = {
      "--umo-entry-url=umop:///index.html?production",
      "--umo-file=" + package,
      "--umo-enable-logging",
      "--umo-log-level=0",
      "--odrel=" + torvane::ExecutableFile(),
  };
  if (!fileToOpen.empty()) arguments.push_back(fileToOpen);
  for (int i = 1; i < argc; ++i) arguments.emplace_back(argv[i]);
  arguments.emplace_back("--disable-accelerated-compositing");
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  torvane::IgnoreClosedPipes();
  PlatformSetup();
  if (!torvane::MakeDirectory(newDataDirName)) {
    std::cerr << "Failed to create Odrel app data directory \"" << newDataDirName << "\""
              << std::endl;
    return 1;
  }
  torvane::LockDirectory(newDataDirName);
  EndCopies(false);  // those of a launch that was killed
  std::cout << "Dianostics: ON" << std::endl;

  MigrateUserData();
  MigrateLocalStorage();
  PrimeUmoFile();
  const std::string packageName = LatestOdrelUmoFile();
  if (packageName.empty()) {
    std::cerr << "Unable to find an Odrel app package on the system" << std::endl;
    return 2;
  }
  const std::string package = newDataDirName + "/" + packageName;
  std::cout << "Loading Odrel package \"" << package << "\"" << std::endl;

  PrimeVEKRuntime();
  const std::string runtime = LatestVEKRuntime();
  if (runtime.empty()) {
    std::cerr << "Unable to find a Vekara runtime on the system" << std::endl;
    return 4;
  }
  std::cout << "Loading Vekara at \"" << runtime << "\"" << std::endl;

  if (!torvane::SpawnProcess(runtime, RuntimeArguments(package, argc, argv), {})) {
    std::cerr << "Failed to launch Torvane Odrel" << std::endl;
    return 3;
  }
  return 0;
}

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

// Removes what a failed copy left at path, so that no later launch takes the part for the whole.
// Removes the target of a link and keeps the link, because the copy wrote through it.
void RemovePart(const std::string& path) {
  std::error_code error;
  if (!torvane::DeleteTree(fs::canonical(path, error)))
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

// Copies the files below an old data directory into the application data directory, breadth first;
// false when one could not be copied. A repeated migration leaves the files that are there already,
// because the application may have changed them. It does replace those in *copied: this launch has
// put them there from an older release. The relative paths copied here are added to *copied.
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
      // A directory in the place of the file is not the file: the copy is tried and fails.
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

// The empty file that remembers an old data directory that could not be marked as migrated: by the
// time of the next launch the application has run, and its files must not be replaced.
std::string UnmarkedFile(const std::string& name) {
  return newDataDirName + "/" + name + ".unmarked";
}

// Brings the data of earlier releases along. The directories are marked together in the end: a file
// that a killed launch has copied from one of them must not keep out the newer file of another.
void MigrateUserData() {
  // The user data directory was unknown at start-up, so that there is no place to migrate to. It
  // may be known by now, and the old data directories with it.
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
    // Nothing is replaced either when it cannot be told whether the marker is there.
    const bool repeated = !IsMissing(marker) || !IsMissing(UnmarkedFile(name));
    successes[name] = MigrateDirectory(old, repeated, &copied);
  }
  if (successes.empty()) return;

  const bool onDisk = torvane::Flush(newDataDirName);
  torvane::EndCopies(copyNotes, onDisk);
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
  const bool keep = torvane::Flush(destination);
  if (copied && !(keep && torvane::CopyFile(source, backup) && torvane::Flush(backup) &&
                  torvane::RemoveSource(copyNotes, source)))
    std::cerr << "Failed to complete localStorage migration" << std::endl;
  torvane::EndCopies(copyNotes, keep);
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
    // What only cannot be told to exist must not be removed by a later launch.
    if (IsMissing(destination)) torvane::NoteCopy(copyNotes, destination);
    CopyWhole(bundle + "/" + name, destination,
              "Failed to prime Odrel app package \"" + name + "\"");
    torvane::EndCopies(copyNotes, torvane::Flush(destination));
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
  torvane::EndCopies(copyNotes, !copied || torvane::Flush(newDataDirName));
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

std::vector<std::string> RuntimeArguments(const std::string& packagePath, int argc, char** argv) {
  std::vector<std::string> arguments = {
      "--umo-entry-url=umop:///index.html?production",
      "--umo-file=" + packagePath,
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
  torvane::EndCopies(copyNotes, false);  // those of a launch that was killed
  std::cout << "Dianostics: ON" << std::endl;

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

  const std::vector<std::string> arguments = RuntimeArguments(packagePath, argc, argv);
  if (!torvane::SpawnProcess(runtimeExecutable, arguments, {})) {
    std::cerr << "Failed to launch Torvane Odrel" << std::endl;
    return 3;
  }
  return 0;
}

#include "launcher/bootstrap.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <unordered_set>

#include "platform/mac/bootstrap_mac.h"
#include "util/file_util.h"
#include "util/process_util.h"

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
std::string fileToOpen;  // the document, empty when there is none

const char* const oldDataDirNames[] = {"Torvane Odrel 2.0", "Torvane Odrel 2.1",
                                       "Torvane Odrel 2.2", nullptr};

// Appends to a file, made when it is missing, and flushes it. A failure, which is said on standard
// error, may leave the beginning of content there.
bool Append(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::app);
  if ((file << content).flush() && torvane::Flush(path)) return true;
  std::cerr << "Failed to touch \"" << path << "\"" << std::endl;
  return false;
}

// An old data directory. The relative paths of what has arrived, or was left to a newer release,
// are listed in the journal, until these are all: then the marker takes its place.
struct OldData {
  std::string directory;
  std::string marker;   // an empty file in the directory
  std::string journal;  // a file in the application data directory, each path ended by a NUL
  bool isMarked;
  std::unordered_set<std::string> listed;  // in the journal, by earlier launches
  std::string arrived;                     // to be appended to the journal by this launch
  bool isComplete = true;                  // nothing has failed in this launch
};
using OldDataList = std::vector<OldData>;

// The old data directories that exist, the oldest release's first. Marked ones matter to others.
OldDataList ReadOldData() {
  OldDataList list;
  for (int i = 0; i < 3; ++i) {
    const std::string directory = torvane::ApplicationDataDirectory(oldOrgName, oldDataDirNames[i]);
    if (!torvane::DirectoryExists(directory)) continue;
    const std::string marker = directory + "/" + migratedFile;
    const std::string journal = newDataDirName + "/" + oldDataDirNames[i] + ".unmarked";
    list.push_back({directory, marker, journal, torvane::FileExists(marker), {}, ""});
    if (list.back().isMarked) continue;

    std::ifstream file(journal, std::ios::binary);
    for (std::string path; std::getline(file, path, '\0');) {
      if (!file.eof())
        list.back().listed.insert(path);
      else  // cut off: no path ends with "/", so it is none, also with what is appended next
        list.back().arrived = std::string("/") + '\0';
    }
  }
  return list;
}

// True until a launch has tried everything once. Asked again for each file, because a launch that
// has not waited for this one may do so meanwhile.
bool IsFirstTry(const OldData& old) {
  return torvane::IsMissing(old.marker) && torvane::IsMissing(old.journal);
}

// True when a newer release has a link to a directory where list[i] has something else, or the
// other way round. The one would be copied through the link, or the link would find no place.
bool IsLeftToNewer(const std::string& relative, const OldDataList& list, std::size_t i) {
  const bool isLink = torvane::LinksToDirectory(list[i].directory + "/" + relative);
  for (std::size_t newer = i + 1; newer < list.size(); ++newer) {
    const std::string entry = list[newer].directory + "/" + relative;
    if (!torvane::IsMissing(entry) && torvane::LinksToDirectory(entry) != isLink) return true;
  }
  return false;
}

// True when an older release's file is there, unchanged, and neither list[i]'s nor a newer one's.
bool HoldsOlderCopy(const std::string& relative, const OldDataList& list, std::size_t i) {
  const auto isCopied = [&relative](const OldData& old) {
    return torvane::IsCopyOf(newDataDirName + "/" + relative, old.directory + "/" + relative);
  };
  return std::any_of(list.data(), list.data() + i, isCopied) &&
         std::none_of(list.data() + i, list.data() + list.size(), isCopied);
}

// Brings a file of list[i] along; false, said on standard error, when that fails. After the first
// try what is there is the application's, unless it is an older release's copy.
bool MigrateFile(const std::string& relative, const OldDataList& list, std::size_t i) {
  const std::string source = list[i].directory + "/" + relative;
  const std::string destination = newDataDirName + "/" + relative;
  bool success = false;
  if (IsFirstTry(list[i]))
    success = torvane::CopyFile(source, destination, newDataDirName);
  else if (torvane::IsMissing(source) || torvane::IsMissing(destination) ||
           HoldsOlderCopy(relative, list, i))
    success = torvane::CopyFile(source, destination);
  else
    success = torvane::FileExists(destination) && !torvane::DirectoryExists(destination);

  if (!success)
    std::cerr << "Failed to copy \"" << source << "\" to \"" << destination << "\"" << std::endl;
  return success;
}

// Brings the files below list[i] along, breadth first.
void MigrateDirectory(OldDataList* list, std::size_t i) {
  OldData& old = (*list)[i];
  std::vector<std::string> work = torvane::ListDirectory(old.directory);
  for (std::size_t k = 0; k < work.size(); ++k) {
    const std::string relative = work[k];
    if (old.listed.count(relative) != 0 || torvane::IsPart(relative)) continue;

    const std::string source = old.directory + "/" + relative;
    const bool isLeft = IsLeftToNewer(relative, *list, i);
    if (!isLeft && torvane::DirectoryExists(source)) {
      for (const std::string& name : torvane::ListDirectory(source))
        work.push_back(relative + "/" + name);
    } else if (isLeft || MigrateFile(relative, *list, i)) {
      old.arrived += relative + '\0';
    } else {
      old.isComplete = false;
    }
  }
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

void TakeTurn() {
  bool ownsParts = torvane::LockDirectory(newDataDirName, 60);
  if (ownsParts)
    for (const std::string& directory : {newDataDirName, storageDirName, runtimeDirName})
      ownsParts = torvane::DeletePart(directory) && ownsParts;
  if (!ownsParts) torvane::AddToPartName("." + std::to_string(getpid()));
}

void MigrateUserData() {
  OldDataList list = ReadOldData();
  bool isFlushDue = false;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i].isMarked) continue;
    std::cout << "Migrating application data from \"" << list[i].directory << "\" to \""
              << newDataDirName << "\"" << std::endl;
    MigrateDirectory(&list, i);
    // A first try may leave what has failed, a later one find what a launch could not flush.
    isFlushDue = isFlushDue || IsFirstTry(list[i]) || !list[i].arrived.empty();
  }
  if (isFlushDue && !torvane::Flush(newDataDirName)) {
    std::cerr << "Failed to write \"" << newDataDirName << "\" to the disk" << std::endl;
    for (const OldData& old : list)
      if (!old.isMarked && torvane::IsMissing(old.journal)) Append(old.journal, "");
    return;
  }
  for (const OldData& old : list) {
    if (old.isMarked || (old.isComplete && Append(old.marker, "")))
      torvane::DeleteFile(old.journal);
    else if (!old.arrived.empty() || torvane::IsMissing(old.journal))
      Append(old.journal, old.arrived);
    if (IsFirstTry(old)) return;  // newer ones' files are to come again after its own
  }
}

void MigrateLocalStorage() {
  const std::string source = newDataDirName + "/qrc__0.localstorage";
  const std::string destination = storageDirName + "/umop__0.localstorage";
  if (!torvane::FileExists(source) || torvane::FileExists(destination)) return;

  const std::string paths = "\"" + source + "\" to \"" + destination + "\"";
  std::cout << "Migrating localStorage from " << paths << std::endl;
  if (!torvane::CopyFile(source, destination)) {
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
  if (!torvane::DirectoryExists(destination) && !torvane::LinksToDirectory(destination) &&
      !torvane::CopyDirectory(source, destination))
    std::cerr << "Failed to prime Vekara runtime \"" << source << "\"" << std::endl;
}

std::string LatestVEKRuntime() {
  const std::vector<std::string> runtimes = torvane::SearchDirectory(runtimeDirName, "*");
  if (runtimes.empty() || torvane::IsPart(runtimes.back())) return "";
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

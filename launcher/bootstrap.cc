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

// Appends to a file, made when it is missing, and flushes it. A failure is said on standard error.
bool Append(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::app);
  if ((file << content).flush() && torvane::Flush(path)) return true;
  std::cerr << "Failed to touch \"" << path << "\"" << std::endl;
  return false;
}

// Old data is copied file by file to the same relative paths in A, the application data directory.
// A file can fail: the disk is full, or a directory is in its place. Two files tell what earlier
// launches have done with an old data directory:
//
//   marker   journal
//   there    -        all of it has arrived: left alone for good
//   missing  missing  first try: everything is copied, over what is there
//   missing  there    later try, because a file has failed: what the journal lists is done with;
//                     the rest is tried again, but not over what the application has written
//
// A launch reads all of them, copies, flushes A once, and then writes markers and journals, the
// oldest release's first. One that is killed before that is simply repeated by the next, and one
// that is killed in between as far as nothing is written down. A power cut is no different.
// Nobody's work is lost: the application starts only later.
//
// For example, 2.1 has a, b and c, and in the first try b and c fail: the journal lists a. Then the
// user removes a and makes a file b. The later try leaves a alone, since it is listed. The user's b
// stays, since something is there, and b counts as arrived. c is copied. With it all has arrived,
// and the marker takes the journal's place.
struct OldData {
  std::string directory;
  std::string marker;   // an empty file in the directory
  std::string journal;  // a file in A: relative paths, each ended by a NUL
  bool isMarked;
  std::unordered_set<std::string> listed;  // in the journal, by earlier launches
  std::string done;                        // what this launch appends to the journal
  bool isComplete = true;                  // nothing has failed in this launch
};
using OldDataList = std::vector<OldData>;

// The old data directories that exist, the oldest release's first, marked ones among them.
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
    std::string path;
    while (std::getline(file, path, '\0') && !file.eof()) list.back().listed.insert(path);
    // Where a kill has cut off the last path, the next one would be joined to it, and both be lost
    // or name another file. So a "/", which no path has at its end, and a NUL come in between.
    if (!path.empty()) list.back().done = std::string("/") + '\0';
  }
  return list;
}

// True until a launch has tried everything once. The disk is asked again for each file: a launch
// that did not wait for this one may meanwhile have ended its try and started the application,
// whose files must not be copied over.
bool IsFirstTry(const OldData& old) {
  return torvane::IsMissing(old.marker) && torvane::IsMissing(old.journal);
}

// True when a newer release has a link to a directory where list[i] has something else, or the
// other way round. Only the newest one's comes: otherwise files would be copied through the link,
// into a directory that is not the application's, or the link would find a directory in its place.
bool IsLeftToNewer(const std::string& relative, const OldDataList& list, std::size_t i) {
  const bool isLink = torvane::LinksToDirectory(list[i].directory + "/" + relative);
  for (std::size_t newer = i + 1; newer < list.size(); ++newer) {
    const std::string entry = list[newer].directory + "/" + relative;
    if (!torvane::IsMissing(entry) && torvane::LinksToDirectory(entry) != isLink) return true;
  }
  return false;
}

// True when an older release's file is in the place, unchanged, so that nobody's work is lost when
// list[i]'s replaces it. False when list[i] or a newer release has the same file.
bool HoldsOlderCopy(const std::string& relative, const OldDataList& list, std::size_t i) {
  const auto isCopied = [&relative](const OldData& old) {
    return torvane::IsCopyOf(newDataDirName + "/" + relative, old.directory + "/" + relative);
  };
  return std::any_of(list.data(), list.data() + i, isCopied) &&
         std::none_of(list.data() + i, list.data() + list.size(), isCopied);
}

// Brings a file of list[i] along; true when it has arrived, or counts as arrived.
bool MigrateFile(const std::string& relative, const OldDataList& list, std::size_t i) {
  const std::string source = list[i].directory + "/" + relative;
  const std::string destination = newDataDirName + "/" + relative;
  if (IsFirstTry(list[i])) return torvane::CopyFile(source, destination, newDataDirName);

  // A source that is missing, a link to nowhere, is "copied" whatever is in its place: that fails
  // and says why, and a later launch may find it. Unlike those of a first try, these copies are
  // flushed one by one: one that a power cut has cut short would count as arrived.
  if (torvane::IsMissing(source) || torvane::IsMissing(destination) ||
      HoldsOlderCopy(relative, list, i))
    return torvane::CopyFile(source, destination);
  return torvane::FileExists(destination) && !torvane::DirectoryExists(destination);
}

// Brings the files below list[i] along, breadth first.
void MigrateDirectory(OldDataList* list, std::size_t i) {
  OldData& old = (*list)[i];
  std::vector<std::string> work = torvane::ListDirectory(old.directory);
  for (std::size_t k = 0; k < work.size(); ++k) {
    const std::string relative = work[k];
    if (old.listed.count(relative) != 0 || torvane::IsPart(relative)) continue;

    const std::string source = old.directory + "/" + relative;
    const bool isLeftToNewer = IsLeftToNewer(relative, *list, i);
    if (!isLeftToNewer && torvane::DirectoryExists(source)) {
      for (const std::string& name : torvane::ListDirectory(source))
        work.push_back(relative + "/" + name);
    } else if (isLeftToNewer || MigrateFile(relative, *list, i)) {
      old.done += relative + '\0';
    } else {
      std::cerr << "Failed to copy \"" << source << "\" to \"" << newDataDirName << "/" << relative
                << "\"" << std::endl;
      old.isComplete = false;
    }
  }
}

// Writes down what is done. A release that gets neither marker nor journal has a first try again,
// over what newer ones have brought. So these are not written down: they come again after it.
void RecordOldData(const OldDataList& list) {
  for (const OldData& old : list) {
    if (old.isMarked || (old.isComplete && Append(old.marker, "")))
      torvane::DeleteFile(old.journal);
    else if (!old.done.empty() || torvane::IsMissing(old.journal))
      Append(old.journal, old.done);
    if (IsFirstTry(old)) return;
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
  const bool ownsParts = torvane::LockDirectory(newDataDirName, 60) &&
                         torvane::DeletePart(newDataDirName) &&
                         torvane::DeletePart(storageDirName) && torvane::DeletePart(runtimeDirName);
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
    // A first try has flushed nothing, and a later one may have found what is not flushed.
    isFlushDue = isFlushDue || IsFirstTry(list[i]) || !list[i].done.empty();
  }

  // Where nothing could be copied A may be missing, and nothing is to be flushed.
  if (isFlushDue && !torvane::IsMissing(newDataDirName) && !torvane::Flush(newDataDirName)) {
    std::cerr << "Failed to write \"" << newDataDirName << "\" to the disk" << std::endl;
    // So nothing is known to be done. An empty journal all the same keeps the next launch from
    // copying over what the application writes from now on.
    for (OldData& old : list) {
      old.done.clear();
      old.isComplete = false;
    }
  }
  RecordOldData(list);
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
      !torvane::CopyWholeDirectory(source, destination))
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

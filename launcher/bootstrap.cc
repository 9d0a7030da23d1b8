#include "launcher/bootstrap.h"

#include <fstream>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "util/file_util.h"
#include "util/process_util.h"

// Start-up initialisation takes the globals in this order, before main. newDataDirName asks the
// platform for the user data directory and needs the names above it.
namespace {

const std::string orgName = "Torvane";
const std::string dataDirName = "Torvane Odrel 2.2";
const std::string newDataDirName = torvane::ApplicationDataDirectory(orgName, dataDirName);

}  // namespace

std::string fileToOpen;

void SetFileToOpen(std::string path) { fileToOpen = std::move(path); }

namespace {

// The name of the app package to load, the greatest that fits the version file; empty when none.
std::string LatestOdrelUmoFile() {
  std::string versionFile = newDataDirName + "/version.txt";
  if (!torvane::FileExists(versionFile))
    versionFile = torvane::ExecutableDirectory() + "/version.txt";

  std::string version = "*";
  std::ifstream file(versionFile);
  if (file.is_open()) std::getline(file, version);

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
  if (!torvane::MakeDirectory(newDataDirName)) {
    std::cerr << "Failed to create Odrel app data directory \"" << newDataDirName << "\""
              << std::endl;
    return 1;
  }
  std::cout << "Dianostics: ON" << std::endl;

  const std::string packageName = LatestOdrelUmoFile();
  if (packageName.empty()) {
    std::cerr << "Unable to find an Odrel app package on the system" << std::endl;
    return 2;
  }
  const std::string package = newDataDirName + "/" + packageName;
  std::cout << "Loading Odrel package \"" << package << "\"" << std::endl;

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

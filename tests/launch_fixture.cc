#include "tests/launch_fixture.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace fs = std::filesystem;

namespace {

std::vector<char*> Pointers(const Strings& strings) {
  std::vector<char*> pointers;
  for (const std::string& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

void MergeStreams() { dup2(1, 2); }

LaunchTest::LaunchTest() {
  std::string name = (fs::temp_directory_path() / "odrel-test-XXXXXX").string();
  root = mkdtemp(name.data());
  bundle = root / "bundle";
  userData = root / "user data";
  data = userData + "/Torvane/Torvane Odrel 2.2";
  for (const char* version : {"2.0", "2.1", "2.2"})
    oldData.push_back(userData + "/Torvane, Inc./Torvane Odrel " + version);
  environment = {"XDG_DATA_HOME=" + userData};
  fs::create_directories(userData);
  fs::create_directories(bundle);
  fs::copy_file(LAUNCHER, bundle + "/odrel");
}

LaunchTest::~LaunchTest() { fs::remove_all(root); }

Outcome LaunchTest::Launch(Strings arguments, const std::function<void()>& prepare) {
  arguments.insert(arguments.begin(), bundle + "/odrel");
  const std::string out = root / "out", err = root / "err";
  const pid_t child = fork();
  if (child == 0) {
    dup2(creat(out.c_str(), 0600), 1);
    dup2(creat(err.c_str(), 0600), 2);
    prepare();
    execve(arguments[0].c_str(), Pointers(arguments).data(), Pointers(environment).data());
    _exit(127);
  }
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

std::string LaunchTest::Executable(const std::string& runtime) {
  return runtime + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
}

void LaunchTest::AddRuntime(const std::string& runtime) {
  fs::create_directories(fs::path(Executable(runtime)).parent_path());
  fs::copy_file(STAND_IN_RUNTIME, Executable(runtime));
}

void LaunchTest::ExpectStarted(const std::string& runtime, const std::string& package,
                               const Strings& arguments) const {
  Strings expected = {Executable(runtime),
                      "--umo-entry-url=umop:///index.html?production",
                      "--umo-file=" + data + "/" + package,
                      "--umo-enable-logging",
                      "--umo-log-level=0",
                      "--odrel=" + bundle + "/odrel"};
  expected.insert(expected.end(), arguments.begin(), arguments.end());
  expected.emplace_back("--disable-accelerated-compositing");
  expected.insert(expected.end(), environment.begin(), environment.end());
  std::string pieces;
  for (const std::string& piece : expected) pieces.append(piece).push_back('\0');

  const std::string record = Executable(runtime) + ".record";
  for (int i = 0; i < 2000 && !fs::exists(record); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(pieces, ReadFile(record));
  fs::remove(record);
}

void WriteFile(const std::string& path, const std::string& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

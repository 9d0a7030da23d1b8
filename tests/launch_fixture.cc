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
  pointers.reserve(strings.size() + 1);
  for (const std::string& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

Strings Recorded(const std::string& path) {
  for (int i = 0; i < 2000 && !fs::exists(path); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_TRUE(fs::exists(path)) << "the runtime was not started";
  const std::string content = ReadFile(path);
  fs::remove(path);
  Strings pieces;
  for (std::size_t start = 0, end; (end = content.find('\0', start)) != std::string::npos;
       start = end + 1)
    pieces.push_back(content.substr(start, end - start));
  return pieces;
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

LaunchTest::~LaunchTest() {
  std::error_code error;
  fs::remove_all(root, error);
}

Outcome LaunchTest::Launch(const Strings& arguments, const std::function<void()>& prepare) {
  Strings all = {bundle + "/odrel"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const std::vector<char*> argv = Pointers(all), envp = Pointers(environment);
  const std::string out = root / "out", err = root / "err";

  const pid_t child = fork();
  if (child == 0) {
    dup2(open(out.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_APPEND | O_CLOEXEC, 0600), 1);
    dup2(open(err.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_APPEND | O_CLOEXEC, 0600), 2);
    prepare();
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

std::string LaunchTest::RuntimeExecutable(const std::string& runtime) {
  return runtime + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
}

void LaunchTest::AddRuntime(const std::string& runtime) {
  const fs::path executable = RuntimeExecutable(runtime);
  fs::create_directories(executable.parent_path());
  fs::copy_file(STAND_IN_RUNTIME, executable);
}

Strings LaunchTest::RecordedArguments(const std::string& path) {
  return Recorded(path + ".arguments");
}

Strings LaunchTest::RecordedEnvironment(const std::string& path) {
  return Recorded(path + ".environment");
}

Strings LaunchTest::CommandLine(const std::string& runtime, const std::string& package) const {
  return {RuntimeExecutable(runtime),
          "--umo-entry-url=umop:///index.html?production",
          "--umo-file=" + data + "/" + package,
          "--umo-enable-logging",
          "--umo-log-level=0",
          "--odrel=" + bundle + "/odrel",
          "--disable-accelerated-compositing"};
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

std::map<std::string, std::string> Files(const std::string& directory) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory))
    if (entry.is_regular_file())
      files[fs::relative(entry.path(), directory)] = ReadFile(entry.path());
  return files;
}

#include "tests/launch_fixture.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "util/string_util.h"

namespace fs = std::filesystem;

namespace {

std::vector<char*> Pointers(const std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (const std::string& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// Appends what can be read without waiting.
void Drain(int pipe, std::string* text) {
  char buffer[4096];
  for (ssize_t count; (count = read(pipe, buffer, sizeof(buffer))) > 0;)
    text->append(buffer, count);
}

std::vector<std::string> Recorded(const std::string& path) {
  for (int i = 0; i < 2000 && !fs::exists(path); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_TRUE(fs::exists(path)) << "the runtime was not started";
  const std::string content = ReadFile(path);
  std::vector<std::string> pieces;
  for (std::size_t start = 0, end; (end = content.find('\0', start)) != std::string::npos;
       start = end + 1)
    pieces.push_back(content.substr(start, end - start));
  return pieces;
}

}  // namespace

LaunchTest::LaunchTest() {
  std::string name = (fs::temp_directory_path() / "odrel-test-XXXXXX").string();
  root = mkdtemp(name.data());
  bundle = root / "bundle";
  userData = root / "user data";
  data = userData + "/Torvane/Torvane Odrel 2.2";
  environment = {"XDG_DATA_HOME=" + userData};
  fs::create_directories(userData);
  fs::create_directories(bundle);
  fs::copy_file(LAUNCHER, bundle + "/odrel");
}

LaunchTest::~LaunchTest() {
  std::error_code error;
  fs::remove_all(root, error);
}

Outcome LaunchTest::Launch(const std::vector<std::string>& arguments, bool merged,
                           const std::function<void()>& prepare) {
  std::vector<std::string> all = {bundle + "/odrel"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const std::vector<char*> argv = Pointers(all), envp = Pointers(environment);
  int out[2], err[2];
  EXPECT_EQ(0, pipe2(out, O_CLOEXEC) + pipe2(err, O_CLOEXEC));

  const pid_t child = fork();
  if (child == 0) {
    dup2(out[1], 1);
    dup2(merged ? out[1] : err[1], 2);
    prepare();
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }

  fcntl(out[0], F_SETFL, O_NONBLOCK);
  fcntl(err[0], F_SETFL, O_NONBLOCK);
  Outcome outcome = {-1, "", ""};
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    Drain(out[0], &outcome.out);
    Drain(err[0], &outcome.err);
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  Drain(out[0], &outcome.out);
  Drain(err[0], &outcome.err);
  for (const int end : {out[0], out[1], err[0], err[1]}) close(end);
  if (WIFEXITED(status)) outcome.exitCode = WEXITSTATUS(status);
  return outcome;
}

std::string LaunchTest::RuntimeExecutable(const std::string& runtime) {
  return runtime + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
}

void LaunchTest::AddRuntime(const std::string& runtime) {
  const fs::path executable = RuntimeExecutable(runtime);
  fs::create_directories(executable.parent_path());
  fs::copy_file(STAND_IN_RUNTIME, executable);
}

std::vector<std::string> LaunchTest::RecordedArguments(const std::string& path) {
  return Recorded(path + ".arguments");
}

std::vector<std::string> LaunchTest::RecordedEnvironment(const std::string& path) {
  return Recorded(path + ".environment");
}

std::vector<std::string> LaunchTest::CommandLine(const std::string& runtime,
                                                 const std::string& package) const {
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

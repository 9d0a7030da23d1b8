// Whole launches of the built program, each test in a bundle and user data directory of its own.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;
using Step = std::function<void()>;

// Creates the file with its parents.
inline void WriteFile(const std::string& path, const std::string& content = "") {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

inline std::string Scenario(const std::string& name) {
  return ReadFile(SCENARIOS "/" + name + ".txt");
}

// In all texts B stands for the bundle, U for the user data directory, A for the application's.
class LaunchTest : public testing::Test {
 protected:
  LaunchTest() {
    umask(022);
    for (const std::string& directory : {userData, bundle}) fs::create_directories(directory);
    fs::copy_file(LAUNCHER, bundle + "/odrel");
    mkfifo((root + "/record").c_str(), 0600);
  }

  ~LaunchTest() override { fs::remove_all(root); }

  // Starts the bundle's launcher, which a signal ends after 10 seconds. prepare runs before it, in
  // its process; name tells launches at once apart.
  pid_t Start(Strings arguments = {}, const Step& prepare = {}, const std::string& name = "") {
    arguments.insert(arguments.begin(), bundle + "/odrel");
    const pid_t child = fork();
    if (child != 0) return child;
    dup2(creat((root + "/out" + name).c_str(), 0600), 1);
    dup2(creat((root + "/err" + name).c_str(), 0600), 2);
    for (int descriptor = 3; descriptor < 64; ++descriptor) close(descriptor);
    alarm(10);
    if (prepare) prepare();
    execve(arguments[0].c_str(), Pointers(arguments).data(), Pointers(environment).data());
    _exit(127);
  }

  // Waits for the launcher and returns all that it has shown.
  std::string Finish(pid_t child, const std::string& name = "") const {
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    const std::string end = WIFEXITED(status) ? "exit code " + std::to_string(WEXITSTATUS(status))
                                              : "signal " + std::to_string(WTERMSIG(status));
    return Shortened(ReadFile(root + "/out" + name) + "-- standard error\n" +
                     ReadFile(root + "/err" + name) + "-- " + end + "\n");
  }

  // A whole launch: all that it has shown and what the runtime was started with.
  std::string Launch(const Strings& arguments = {}, const Step& prepare = {}) {
    const std::string text = Finish(Start(arguments, prepare));
    const bool started = text.find("-- exit code 0\n") != std::string::npos;
    return started ? text + Shortened(ReadFile(root + "/record")) : text;
  }

  // A launch, and what lies in the user data directory after it.
  std::string LaunchAndTree(const Step& prepare = {}) {
    const std::string text = Launch({}, prepare);
    return text + Tree();
  }

  static void MergeStreams() { dup2(1, 2); }  // a step: all lines in their order

  // What lies in the user data directory, a line each: links with their text, files with their mode
  // (octal), size and beginning, pipes, and directories with their mode.
  std::string Tree() const {
    const std::string command = "find '" + userData + R"(' -type l -printf '%p -> %l\n')" +
                                R"( -o -name 'Torvane Umo' -printf '%p %m\n')" +
                                R"( -o -type f -printf '%p %m %s bytes "')" +
                                R"( -exec head -c 20 {} ';' -printf '"\n')" +
                                R"( -o -type p -printf '%p|\n' -o -type d -printf '%p/ %m\n')" +
                                " | LC_ALL=C sort >'" + root + "/tree'";
    EXPECT_EQ(0, std::system(command.c_str()));
    return "-- user data\n" + Shortened(ReadFile(root + "/tree"));
  }

  // Makes what the scenario lists in the notation of Tree, directories without mode, in the place
  // of what is there. A path that is followed by nothing is removed.
  void Make(const std::string& scenario) const {
    constexpr std::size_t none = std::string::npos;
    std::istringstream lines(Scenario(scenario));
    for (std::string line; std::getline(lines, line);) {
      const std::size_t arrow = line.find(" -> "), bytes = line.find(" bytes \"");
      const std::size_t size = line.rfind(' ', bytes - 1);
      const std::size_t mode = bytes == none ? none : line.rfind(' ', size - 1);
      const std::string path = Expanded(line.substr(0, std::min({arrow, mode, line.find('|')})));
      fs::remove_all(path);
      fs::create_directories(fs::path(path).parent_path());
      if (arrow != none) fs::create_symlink(Expanded(line.substr(arrow + 4)), path);
      if (line.back() == '|') mkfifo(path.c_str(), 0600);
      if (mode == none) continue;
      std::string content = line.substr(bytes + 8, line.size() - bytes - 9);
      content.resize(std::stoul(line.substr(size)), 'l');
      WriteFile(path, content);
      chmod(path.c_str(), std::stoi(line.substr(mode), nullptr, 8));
    }
  }

  // What a launch shows that has nothing to copy and no bundle to copy from.
  static std::string Started(const Strings& documentsAndArguments = {}) {
    std::string lines;
    for (const std::string& line : documentsAndArguments) lines += line + "\n";
    return Replace(Scenario("started"), "$ARGUMENTS\n", lines);
  }

  static void AddRuntime(const std::string& runtime,
                         const std::string& program = ReadFile(STAND_IN_RUNTIME)) {
    const std::string executable = runtime + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
    WriteFile(executable, program);
    chmod(executable.c_str(), 0755);
  }

  const std::string root = testing::TempDir() + "odrel-test-" + std::to_string(getpid()),
                    userData = root + "/user data", data = userData + "/Torvane/Torvane Odrel 2.2",
                    oldData = userData + "/Torvane, Inc./Torvane Odrel 2.";  // and one digit
  std::string bundle = root + "/bundle";
  Strings environment = {"XDG_DATA_HOME=" + userData};  // the launcher's, whole

 private:
  std::string Shortened(const std::string& text) const {
    return Replace(Replace(Replace(text, data, "A"), userData, "U"), bundle, "B");
  }

  std::string Expanded(const std::string& path) const {
    for (const auto& [letter, full] : {std::pair("A/", data), {"U/", userData}, {"B/", bundle}})
      if (path.rfind(letter, 0) == 0) return full + path.substr(1);
    return path;
  }

  static std::vector<char*> Pointers(const Strings& strings) {
    std::vector<char*> pointers;
    for (const std::string& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
  }
};

// Whole launches of the built program, each test in a bundle and user data directory of its own.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

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

// The content of a data file beside the tests, with the paths shortened as LaunchTest does.
inline std::string Expected(const std::string& name) {
  return ReadFile(EXPECTED_TEXTS "/" + name + ".txt");
}

// In the texts B stands for the bundle, U for the user data directory, A for the application's.
class LaunchTest : public testing::Test {
 protected:
  LaunchTest() {
    umask(022);
    for (const std::string& directory : {userData, bundle}) fs::create_directories(directory);
    fs::copy_file(LAUNCHER, bundle + "/odrel");
    mkfifo((root + "/record").c_str(), 0600);
  }

  ~LaunchTest() override { fs::remove_all(root); }

  // Starts the bundle's launcher, and ends it when it waits. prepare runs before it, in its
  // process; name tells launches at once apart.
  pid_t Start(
      Strings arguments = {}, const std::function<void()>& prepare = [] {},
      const std::string& name = "") {
    arguments.insert(arguments.begin(), bundle + "/odrel");
    const pid_t child = fork();
    if (child != 0) return child;
    dup2(creat((root + "/out" + name).c_str(), 0600), 1);
    dup2(creat((root + "/err" + name).c_str(), 0600), 2);
    for (int descriptor = 3; descriptor < 64; ++descriptor) close(descriptor);
    alarm(10);
    prepare();
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
  std::string Launch(
      const Strings& arguments = {}, const std::function<void()>& prepare = [] {}) {
    const std::string text = Finish(Start(arguments, prepare));
    const bool started = text.find("-- exit code 0\n") != std::string::npos;
    return started ? text + Shortened(ReadFile(root + "/record")) : text;
  }

  // A launch, and what lies in the user data directory after it.
  std::string LaunchAndTree(const std::function<void()>& prepare = [] {}) {
    const std::string text = Launch({}, prepare);
    return text + Tree();
  }

  static void MergeStreams() { dup2(1, 2); }  // a prepare: all lines in their order

  // Links with their text, files with their mode and content, and empty directories.
  std::string Tree() const {
    std::set<std::string> lines;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(userData)) {
      std::ostringstream line;
      line << entry.path().string();
      if (entry.is_symlink()) {
        line << " -> " << fs::read_symlink(entry).string();
      } else if (entry.is_regular_file()) {
        const std::string content = ReadFile(entry.path());
        line << " " << std::oct << static_cast<int>(entry.status().permissions()) << std::dec;
        if (content == ReadFile(STAND_IN_RUNTIME))
          line << " the runtime";
        else if (content.size() > 100)
          line << " " << content.size() << " bytes";
        else if (!content.empty())
          line << " " << content;
      } else if (entry.is_directory() && !fs::is_empty(entry)) {
        continue;
      }
      lines.insert(line.str() + "\n");
    }
    std::string text = "-- user data\n";
    for (const std::string& line : lines) text += line;
    return Shortened(text);
  }

  // What a launch shows that has nothing to copy and no bundle to copy from.
  static std::string Started(const Strings& documentsAndArguments = {}) {
    std::string lines;
    for (const std::string& line : documentsAndArguments) lines += line + "\n";
    return Replace(Expected("started"), "$ARGUMENTS\n", lines);
  }

  static std::string Executable(const std::string& runtime) {
    return runtime + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
  }

  static void AddRuntime(const std::string& runtime) {
    fs::create_directories(fs::path(Executable(runtime)).parent_path());
    fs::copy_file(STAND_IN_RUNTIME, Executable(runtime));
  }

  const std::string root = MakeRoot(), userData = root + "/user data",
                    data = userData + "/Torvane/Torvane Odrel 2.2",
                    oldData = userData + "/Torvane, Inc./Torvane Odrel 2.";  // and one digit
  std::string bundle = root + "/bundle";
  Strings environment = {"XDG_DATA_HOME=" + userData};  // the launcher's, whole

 private:
  static std::string MakeRoot() {
    std::string name = fs::temp_directory_path() / "odrel-test-XXXXXX";
    return mkdtemp(name.data());
  }

  std::string Shortened(const std::string& text) const {
    return Replace(Replace(Replace(text, data, "A"), userData, "U"), bundle, "B");
  }

  static std::vector<char*> Pointers(const Strings& strings) {
    std::vector<char*> pointers;
    for (const std::string& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
  }
};

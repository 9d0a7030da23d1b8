// Whole launches of the built program, each test in a bundle and user data directory of its own.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

struct Outcome {
  int exitCode;  // -1 when a signal ended the launcher
  std::string out, err;
};

// Creates the file with its parents.
inline void WriteFile(const std::string& path, const std::string& content = "") {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

// Empty when the file is missing.
inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class LaunchTest : public testing::Test {
 protected:
  LaunchTest() {
    for (const char* version : {"2.0", "2.1", "2.2"})
      oldData.push_back(userData + "/Torvane, Inc./Torvane Odrel " + version);
    for (const std::string& directory : {userData, bundle}) fs::create_directories(directory);
    fs::copy_file(LAUNCHER, bundle + "/odrel");
  }

  ~LaunchTest() override { fs::remove_all(root); }

  // Launches the bundle's launcher and waits for it, not for the runtime. prepare runs before it,
  // in its process.
  Outcome Launch(
      Strings arguments = {}, const std::function<void()>& prepare = [] {}) {
    arguments.insert(arguments.begin(), bundle + "/odrel");
    const pid_t child = fork();
    if (child == 0) {
      dup2(creat((root + "/out").c_str(), 0600), 1);
      dup2(creat((root + "/err").c_str(), 0600), 2);
      alarm(20);  // a launch that waits is one that failed
      prepare();
      execve(arguments[0].c_str(), Pointers(arguments).data(), Pointers(environment).data());
      _exit(127);
    }
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(root + "/out"),
            ReadFile(root + "/err")};
  }

  static void MergeStreams() { dup2(1, 2); }  // a prepare: the lines of both in Outcome::out

  // The path of the runtime executable in a runtime directory, and the stand-in copied there.
  static std::string Executable(const std::string& runtime) {
    return runtime + "/Torvane Odrel.app/Contents/MacOS/Torvane Umo";
  }
  static void AddRuntime(const std::string& runtime) {
    WriteFile(Executable(runtime));
    fs::copy_file(STAND_IN_RUNTIME, Executable(runtime), fs::copy_options::overwrite_existing);
  }

  // Waits for the stand-in to have been started, with the launcher's whole environment.
  void ExpectStarted(const std::string& runtime, const std::string& package,
                     const Strings& arguments = {}) const {
    const std::string record = Executable(runtime) + ".record";
    for (int i = 0; i < 2000 && !fs::exists(record); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::string expected;
    const Strings before = {Executable(runtime),
                            "--umo-entry-url=umop:///index.html?production",
                            "--umo-file=" + data + "/" + package,
                            "--umo-enable-logging",
                            "--umo-log-level=0",
                            "--odrel=" + bundle + "/odrel"};
    for (const Strings& pieces :
         {before, arguments, {"--disable-accelerated-compositing"}, environment})
      for (const std::string& piece : pieces) expected.append(piece).push_back('\0');
    EXPECT_EQ(expected, ReadFile(record));
    fs::remove(record);
  }

  const std::string root = MakeRoot(), userData = root + "/user data",
                    data = userData + "/Torvane/Torvane Odrel 2.2";  // of the application
  std::string bundle = root + "/bundle";
  Strings oldData;                                      // oldest first; not created
  Strings environment = {"XDG_DATA_HOME=" + userData};  // the launcher's, whole

 private:
  static std::string MakeRoot() {
    std::string name = fs::temp_directory_path() / "odrel-test-XXXXXX";
    return mkdtemp(name.data());
  }

  static std::vector<char*> Pointers(const Strings& strings) {
    std::vector<char*> pointers;
    for (const std::string& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
  }
};

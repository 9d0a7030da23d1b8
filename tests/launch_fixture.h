// Whole launches of the built program, each test with a bundle and a user data directory of its
// own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

struct Outcome {
  int exitCode;  // -1 when a signal ended the launcher
  std::string out, err;
};

class LaunchTest : public testing::Test {
 protected:
  LaunchTest();
  ~LaunchTest() override;

  // Launches the launcher of the bundle and waits for it, not for the runtime. With err merged,
  // Outcome::out has the lines of both streams. prepare runs in the new process before the
  // launcher.
  Outcome Launch(
      const std::vector<std::string>& arguments = {}, bool merged = false,
      const std::function<void()>& prepare = [] {});

  // The path of the runtime executable in a runtime directory, and the stand-in copied there.
  static std::string RuntimeExecutable(const std::string& runtime);
  static void AddRuntime(const std::string& runtime);

  // What the stand-in at path was started with; waits for it to have been.
  static std::vector<std::string> RecordedArguments(const std::string& path);
  static std::vector<std::string> RecordedEnvironment(const std::string& path);

  // The bundle's own command line: what a runtime receives, without document and arguments.
  std::vector<std::string> CommandLine(const std::string& runtime,
                                       const std::string& package) const;

  std::filesystem::path root;
  std::string bundle, userData, data;    // data: the application data directory
  std::vector<std::string> environment;  // the launcher's, whole
};

void WriteFile(const std::string& path, const std::string& content = "");  // with its parents
std::string ReadFile(const std::string& path);

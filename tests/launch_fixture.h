// Whole launches of the built program, each test with a bundle and a user data directory of its
// own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

using Strings = std::vector<std::string>;

struct Outcome {
  int exitCode;  // -1 when a signal ended the launcher
  std::string out, err;
};

// For Outcome Launch(): both streams on one file, the lines of both in out.
void MergeStreams();

class LaunchTest : public testing::Test {
 protected:
  LaunchTest();
  ~LaunchTest() override;

  // Launches the launcher of the bundle and waits for it, not for the runtime. prepare runs in the
  // new process before the launcher.
  Outcome Launch(
      const Strings& arguments = {}, const std::function<void()>& prepare = [] {});

  // The path of the runtime executable in a runtime directory, and the stand-in copied there.
  static std::string RuntimeExecutable(const std::string& runtime);
  static void AddRuntime(const std::string& runtime);

  // What the stand-in at path was started with; waits for it to have been, and forgets it.
  static Strings RecordedArguments(const std::string& path);
  static Strings RecordedEnvironment(const std::string& path);

  // What a runtime receives, without document and arguments.
  Strings CommandLine(const std::string& runtime, const std::string& package) const;

  std::filesystem::path root;
  std::string bundle, userData, data;  // data: the application data directory
  Strings oldData;                     // the old data directories, oldest first; not created
  Strings environment;                 // the launcher's, whole
};

void WriteFile(const std::string& path, const std::string& content = "");  // with its parents
std::string ReadFile(const std::string& path);                             // empty when missing
bool Contains(const std::string& text, const std::string& part);

// The content of every file below directory, by relative path.
std::map<std::string, std::string> Files(const std::string& directory);

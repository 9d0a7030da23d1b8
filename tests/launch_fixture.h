// Whole launches of the built program, each test in a bundle and user data directory of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

using Strings = std::vector<std::string>;

struct Outcome {
  int exitCode;  // -1 when a signal ended the launcher
  std::string out, err;
};

void MergeStreams();  // a prepare of Launch: the lines of both streams in Outcome::out

class LaunchTest : public testing::Test {
 protected:
  LaunchTest();
  ~LaunchTest() override;

  // Launches the bundle's launcher and waits for it, not for the runtime. prepare runs before it,
  // in its process.
  Outcome Launch(
      Strings arguments = {}, const std::function<void()>& prepare = [] {});

  // The path of the runtime executable in a runtime directory, and the stand-in copied there.
  static std::string Executable(const std::string& runtime);
  static void AddRuntime(const std::string& runtime);

  // Waits for the stand-in to have been started, with the launcher's whole environment.
  void ExpectStarted(const std::string& runtime, const std::string& package,
                     const Strings& arguments = {}) const;

  std::filesystem::path root;
  std::string bundle, userData, data;  // data: the application data directory
  Strings oldData;                     // the old data directories, oldest first; not created
  Strings environment;                 // the launcher's, whole
};

void WriteFile(const std::string& path, const std::string& content = "");  // with its parents
std::string ReadFile(const std::string& path);                             // empty when missing
bool Contains(const std::string& text, const std::string& part);

// The launch itself: what it selects, what the runtime receives, which line and exit code it ends
// with.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <set>

#include "tests/launch_fixture.h"

namespace fs = std::filesystem;

namespace {

// The paths of the empty files in the temporary directory.
std::set<std::string> EmptyFiles() {
  std::set<std::string> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/tmp"))
    if (entry.is_regular_file(error) && entry.file_size(error) == 0) files.insert(entry.path());
  return files;
}

}  // namespace

class InstalledTest : public LaunchTest {
 protected:
  InstalledTest() {
    WriteFile(data + "/mrd-1.umo");
    AddRuntime(runtime);
  }

  const std::string runtime = data + "/runtime/vek-1";
  const std::string executable = RuntimeExecutable(runtime);
};

TEST_F(InstalledTest, ArgumentOrEnvironmentEntryChangedOnTheWay) {
  Strings arguments = {
      "", " b c ", "line\nfeed", "\xff\xfe", "--umo-enable-logging", std::string(100000, 'x')};
  arguments.insert(arguments.end(), 3000, "-n");
  environment.insert(environment.begin(), {"TWICE=1", "EMPTY=", "no assignment"});
  environment.insert(environment.end(), {"TWICE=2", "BYTES=\xff\n", "ODREL_ANYTHING=kept"});

  EXPECT_EQ(0, Launch(arguments).exitCode);
  Strings expected = CommandLine(runtime, "mrd-1.umo");
  expected.insert(expected.end() - 1, arguments.begin(), arguments.end());
  EXPECT_EQ(expected, RecordedArguments(executable));
  EXPECT_EQ(environment, RecordedEnvironment(executable));
}

TEST_F(InstalledTest, LauncherWaitsForTheRuntime) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(0, Launch({"--linger"}).exitCode);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  RecordedArguments(executable);
}

TEST_F(InstalledTest, FailedStartGoesUnnoticed) {
  fs::remove(executable);
  fs::create_directory(executable);
  const std::set<std::string> before = EmptyFiles();
  // The launcher may miss the failure when the child is slow.
  Outcome outcome = {0, "", ""};
  for (int i = 0; i < 50 && outcome.exitCode == 0; ++i) outcome = Launch({}, MergeStreams);
  EXPECT_EQ(3, outcome.exitCode);
  EXPECT_EQ(
      "Dianostics: ON\nUnable to find an Odrel app package to prime\n"
      "Loading Odrel package \"" +
          data +
          "/mrd-1.umo\"\n"
          "Unable to find a Vekara runtime to prime\n"
          "Loading Vekara at \"" +
          executable + "\"\nFailed to launch Torvane Odrel\n",
      outcome.out);
  int markers = 0;
  for (const std::string& file : EmptyFiles())
    if (before.count(file) == 0) markers += fs::remove(file);
  EXPECT_GE(markers, 1);
}

TEST_F(InstalledTest, WrongPackageSelected) {
  struct Case {
    Strings packages;
    const char* userVersion;    // content of version.txt in the application data directory, or null
    const char* bundleVersion;  // the same beside the launcher
    const char* selected;       // null: none
  };
  const Case cases[] = {
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo", "mrd-3.umo.bak"}, nullptr, nullptr, "mrd-2.2.9.umo"},
      {{"MRD-3.0.UMO", "mrd-2.umo"}, nullptr, nullptr, "mrd-2.umo"},
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo"}, "2.2.10\nmore", "2.2.9", "mrd-2.2.10.umo"},
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo"}, nullptr, "2.2.10", "mrd-2.2.10.umo"},
      {{"mrd-2.umo"}, "2\r\n", nullptr, nullptr},
      {{"mrd-2.umo"}, "", "2", nullptr},
      {{"mrd-2.umo", "MRD-.UMO"}, "\n2", nullptr, "MRD-.UMO"},
      {{"mrd-2.2.1.umo", "mrd-2.2.2.umo", "mrd-2.3.umo"}, "2.2.*", nullptr, "mrd-2.2.2.umo"},
      {{"mrd-\\x.umo", "mrd-x.umo"}, "\\x", nullptr, "mrd-\\x.umo"},
  };
  fs::remove(data + "/mrd-1.umo");
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.packages));
    for (const std::string& package : test.packages) WriteFile(data + "/" + package);
    if (test.userVersion != nullptr) WriteFile(data + "/version.txt", test.userVersion);
    if (test.bundleVersion != nullptr) WriteFile(bundle + "/version.txt", test.bundleVersion);

    const Outcome outcome = Launch();
    if (test.selected == nullptr) {
      EXPECT_EQ(2, outcome.exitCode);
      EXPECT_EQ("Dianostics: ON\n", outcome.out);
      EXPECT_TRUE(Contains(outcome.err, "Unable to find an Odrel app package on the system\n"));
    } else {
      EXPECT_EQ(CommandLine(runtime, test.selected), RecordedArguments(executable));
    }
    for (const std::string& package : test.packages) fs::remove(data + "/" + package);
    fs::remove(data + "/version.txt");
    fs::remove(bundle + "/version.txt");
  }
}

TEST_F(InstalledTest, VersionFileThatCannotBeOpenedGivesWayToTheOther) {
  WriteFile(bundle + "/version.txt", "absent");
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {AF_UNIX, ""};
  ASSERT_LT((data + "/version.txt").size(), sizeof(address.sun_path));
  (data + "/version.txt").copy(address.sun_path, sizeof(address.sun_path) - 1);
  ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
  close(listener);
  EXPECT_EQ(0, Launch().exitCode);
  EXPECT_EQ(CommandLine(runtime, "mrd-1.umo"), RecordedArguments(executable));
}

TEST_F(InstalledTest, WrongRuntimeSelected) {
  for (const char* runtimes : {"vek-10", "vek-9", "zzz"}) {
    AddRuntime(data + "/runtime/" + runtimes);
    AddRuntime(data + "/runtime/VEK-" + runtimes);
    EXPECT_EQ(0, Launch().exitCode);
    RecordedArguments(RuntimeExecutable(data + "/runtime/" + runtimes));
  }
  WriteFile(data + "/runtime/zzzz");
  const Outcome outcome = Launch();
  EXPECT_EQ(4, outcome.exitCode);
  EXPECT_TRUE(Contains(outcome.err, "Unable to find a Vekara runtime on the system\n"));
}

TEST_F(InstalledTest, LongExecutablePathCutOff) {
  const std::string old = bundle;
  for (int i = 0; i < 5; ++i) bundle += "/" + std::string(240, 'd');
  fs::create_directories(bundle);
  fs::copy_file(old + "/odrel", bundle + "/odrel");
  EXPECT_EQ(0, Launch().exitCode);
  EXPECT_EQ(CommandLine(runtime, "mrd-1.umo"), RecordedArguments(executable));
}

TEST_F(LaunchTest, DataDirectoryFoundElsewhereOrCreatedWhenUnknown) {
  const std::string home = root / "home";
  environment = {"XDG_DATA_HOME=relative", "HOME=" + home};
  EXPECT_EQ(2, Launch().exitCode);
  EXPECT_FALSE(fs::exists(home)) << "a missing folder was created";

  fs::create_directories(home + "/.local/share");
  Launch();
  EXPECT_TRUE(fs::is_directory(home + "/.local/share/Torvane/Torvane Odrel 2.2"));

  for (const std::size_t length : {1023, 1024}) {
    std::string path = userData;
    while (length - path.size() > 200) path += "/" + std::string(150, 'u');
    path += "/" + std::string(length - path.size() - 1, 'v');
    fs::create_directories(path);
    environment = {"XDG_DATA_HOME=" + path + "/"};
    EXPECT_EQ(2, Launch().exitCode);
    EXPECT_EQ(length == 1023, fs::exists(path + "/Torvane/Torvane Odrel 2.2"));
  }
}

TEST_F(LaunchTest, LaunchGoesOnWithoutItsDataDirectory) {
  WriteFile(userData + "/Torvane");
  const Outcome outcome = Launch();
  EXPECT_EQ(1, outcome.exitCode);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ("Failed to create Odrel app data directory \"" + data + "\"\n", outcome.err);
}

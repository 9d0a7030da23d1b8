// Launches that have nothing to copy: what they select, hand to the runtime and end with.
#include <sys/stat.h>

#include <chrono>

#include "tests/launch_fixture.h"

class InstalledTest : public LaunchTest {
 protected:
  InstalledTest() {
    WriteFile(data + "/mrd-1.umo");
    AddRuntime(runtime);
  }

  const std::string runtime = data + "/runtime/vek-1";
};

TEST_F(InstalledTest, ArgumentOrEnvironmentEntryOrLongPathChangedOnTheWay) {
  const std::string launcher = bundle + "/odrel";
  for (int i = 0; i < 5; ++i) bundle += "/" + std::string(240, 'd');
  fs::create_directories(bundle);
  fs::copy_file(launcher, bundle + "/odrel");
  Strings arguments = {
      "", " b c ", "line\nfeed", "\xff\xfe", "--umo-enable-logging", std::string(100000, 'x')};
  arguments.insert(arguments.end(), 3000, "-n");
  environment.insert(environment.begin(), {"TWICE=1", "EMPTY=", "no assignment"});
  // clang's symbolizer cannot read a path that long, and leak suppressions need it.
  environment.insert(environment.end(), {"TWICE=2", "BYTES=\xff\n", "LSAN_OPTIONS=detect_leaks=0"});
  EXPECT_EQ(0, Launch(arguments).exitCode);
  ExpectStarted(runtime, "mrd-1.umo", arguments);
}

TEST_F(InstalledTest, WrongDocumentOpened) {
  const std::pair<std::string, Strings> cases[] = {
      {"/tmp/x.txt", {"/tmp/x.txt", "-a", "/argument"}},
      {"/\xc3\xbc/a b\t/second", {"/\xc3\xbc/a b", "-a", "/argument"}},
      {"/first\n\n/last\t/other\n", {"/last", "-a", "/argument"}},
      {"\n\t\n", {"-a", "/argument"}},
  };
  for (const auto& [requests, arguments] : cases) {
    environment = {"ODREL_OPEN_DOCUMENTS=" + requests, "XDG_DATA_HOME=" + userData};
    EXPECT_EQ(0, Launch({"-a", "/argument"}).exitCode);
    ExpectStarted(runtime, "mrd-1.umo", arguments);
  }
}

TEST_F(InstalledTest, LauncherWaitsForTheRuntime) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(0, Launch({"--linger"}).exitCode);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  ExpectStarted(runtime, "mrd-1.umo", {"--linger"});
}

TEST_F(InstalledTest, FailedStartGoesUnnoticed) {
  fs::remove(Executable(runtime));
  fs::create_directory(Executable(runtime));
  int noticed = 0;  // a slow child may fail after the launcher has looked
  for (int i = 0; i < 20; ++i) {
    const Outcome outcome = Launch();
    if (outcome.exitCode == 3) ++noticed;
    EXPECT_EQ(outcome.exitCode == 3, Contains(outcome.err, "Failed to launch Torvane Odrel\n"));
  }
  EXPECT_GE(noticed, 10);
}

TEST_F(InstalledTest, WrongPackageSelected) {
  struct Case {
    Strings packages;
    const char *userVersion, *bundleVersion;  // content of the version files; null: no file
    const char* selected;                     // null: none
  };
  const Case cases[] = {
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo", "mrd-3.umo.bak"}, nullptr, nullptr, "mrd-2.2.9.umo"},
      {{"MRD-3.0.UMO", "mrd-2.umo"}, nullptr, nullptr, "mrd-2.umo"},
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo"}, "2.2.10\nmore", "2.2.9", "mrd-2.2.10.umo"},
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo"}, nullptr, "2.2.10", "mrd-2.2.10.umo"},
      {{"mrd-2.umo"}, "2\r\n", nullptr, nullptr},
      {{"mrd-2.umo"}, "", "2", nullptr},
      {{"mrd-2.2.1.umo", "mrd-2.2.2.umo", "mrd-2.3.umo"}, "2.2.*", nullptr, "mrd-2.2.2.umo"},
      {{"mrd-\\x.umo", "mrd-x.umo"}, "\\x", nullptr, "mrd-\\x.umo"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.packages));
    for (const auto& entry : fs::directory_iterator(data))
      if (entry.is_regular_file()) fs::remove(entry);
    fs::remove(bundle + "/version.txt");
    for (const std::string& package : test.packages) WriteFile(data + "/" + package);
    if (test.userVersion != nullptr) WriteFile(data + "/version.txt", test.userVersion);
    if (test.bundleVersion != nullptr) WriteFile(bundle + "/version.txt", test.bundleVersion);

    const Outcome outcome = Launch();
    if (test.selected != nullptr) ExpectStarted(runtime, test.selected);
    EXPECT_EQ(test.selected != nullptr ? 0 : 2, outcome.exitCode);
    EXPECT_EQ(test.selected == nullptr,
              Contains(outcome.err, "Unable to find an Odrel app package on the system\n"));
  }
}

TEST_F(InstalledTest, VersionFileThatCannotBeOpenedGivesWayToTheOther) {
  WriteFile(bundle + "/version.txt", "absent");
  ASSERT_EQ(0, mknod((data + "/version.txt").c_str(), S_IFSOCK | 0600, 0));
  EXPECT_EQ(0, Launch().exitCode);
  ExpectStarted(runtime, "mrd-1.umo");
}

TEST_F(InstalledTest, WrongRuntimeSelected) {
  for (const char* name : {"vek-10", "vek-9", "VEK-99"}) AddRuntime(data + "/runtime/" + name);
  EXPECT_EQ(0, Launch().exitCode);
  ExpectStarted(data + "/runtime/vek-9", "mrd-1.umo");

  WriteFile(data + "/runtime/zzzz");
  const Outcome outcome = Launch();
  EXPECT_EQ(4, outcome.exitCode);
  EXPECT_TRUE(Contains(outcome.err, "Unable to find a Vekara runtime on the system\n"));
}

TEST_F(LaunchTest, DataDirectoryFoundElsewhereOrCreatedWhenUnknown) {
  const std::string home = root + "/home", share = home + "/.local/share";
  std::string longest = userData;
  while (longest.size() < 800) longest += "/" + std::string(150, 'u');
  longest += "/" + std::string(1022 - longest.size(), 'u');
  for (const std::string& directory : {share, longest, longest + "u"}) {
    environment = {"HOME=" + home, "XDG_DATA_HOME=" + (directory == share ? "x" : directory + "/")};
    EXPECT_EQ(2, Launch().exitCode);
    EXPECT_FALSE(fs::exists(directory)) << "a missing folder was created";
    fs::create_directories(directory);
    EXPECT_EQ(2, Launch().exitCode);
    EXPECT_EQ(directory.size() < 1024, fs::exists(directory + "/Torvane/Torvane Odrel 2.2"));
  }
}

TEST_F(LaunchTest, LaunchGoesOnWithoutItsDataDirectory) {
  WriteFile(userData + "/Torvane");
  const Outcome outcome = Launch({}, MergeStreams);
  EXPECT_EQ(1, outcome.exitCode);
  EXPECT_EQ("Failed to create Odrel app data directory \"" + data + "\"\n", outcome.out);
}

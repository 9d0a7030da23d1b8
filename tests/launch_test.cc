#include <sys/resource.h>

#include <csignal>

#include "tests/launch_fixture.h"

// Launches that have nothing to copy: what they select, hand to the runtime and end with.
class InstalledTest : public LaunchTest {
 protected:
  InstalledTest() {
    WriteFile(data + "/mrd-1.umo");
    AddRuntime(data + "/runtime/vek-1");
  }
};

TEST_F(InstalledTest, ArgumentsEnvironmentAndLongPathReachTheRuntimeUnchanged) {
  const std::string launcher = bundle + "/odrel";
  for (int i = 0; i < 5; ++i) bundle += "/" + std::string(240, 'd');
  fs::create_directories(bundle);
  fs::copy_file(launcher, bundle + "/odrel");
  Strings arguments = {
      "", " b c ", "line\nfeed", "\xff\xfe", "--umo-enable-logging", std::string(100000, 'x')};
  arguments.insert(arguments.end(), 3000, "-n");
  std::string expected = Started(arguments);
  // clang's symbolizer cannot read a path that long, and leak suppressions need it.
  for (const char* entry : {"TWICE=1", "EMPTY=", "no assignment", "TWICE=2", "BYTES=\xff\n",
                            "LSAN_OPTIONS=detect_leaks=0"}) {
    environment.emplace_back(entry);
    expected.append(entry).push_back('\n');
  }
  EXPECT_EQ(expected, Launch(arguments));
}

TEST_F(InstalledTest, LastRequestsFirstDocumentReachesTheRuntime) {
  const std::pair<std::string, Strings> cases[] = {
      {"/tmp/x.txt", {"/tmp/x.txt", "-a", "/argument"}},
      {"/\xc3\xbc/a b\t/second", {"/\xc3\xbc/a b", "-a", "/argument"}},
      {"/first\n\n/last\t/other\n", {"/last", "-a", "/argument"}},
      {"\n\t\n", {"-a", "/argument"}},
  };
  environment.emplace_back();
  for (const auto& [requests, arguments] : cases) {
    environment.back() = "ODREL_OPEN_DOCUMENTS=" + requests;
    EXPECT_EQ(Started(arguments) + environment.back() + "\n", Launch({"-a", "/argument"}));
  }
}

TEST_F(InstalledTest, GreatestPackageThatFitsTheVersionFileIsLoaded) {
  const std::string absent = "absent";  // no version file, no package
  const struct {
    Strings packages;
    std::string userVersion, bundleVersion, loaded;
  } cases[] = {
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo", "mrd-3.umo.bak"}, absent, absent, "mrd-2.2.9.umo"},
      {{"MRD-3.0.UMO", "mrd-2.umo"}, absent, absent, "mrd-2.umo"},
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo"}, "2.2.10\nmore", "2.2.9", "mrd-2.2.10.umo"},
      {{"mrd-2.2.9.umo", "mrd-2.2.10.umo"}, absent, "2.2.10", "mrd-2.2.10.umo"},
      {{"mrd-2.umo"}, "2\r\n", absent, absent},
      {{"mrd-2.umo"}, "", "2", absent},
      {{"mrd-2.2.1.umo", "mrd-2.2.2.umo", "mrd-2.3.umo"}, "2.2.*", absent, "mrd-2.2.2.umo"},
      {{"mrd-\\x.umo", "mrd-x.umo"}, "\\x", absent, "mrd-\\x.umo"},
  };
  for (const auto& [packages, userVersion, bundleVersion, loaded] : cases) {
    for (const fs::directory_entry& entry : fs::directory_iterator(data))
      if (entry.is_regular_file()) fs::remove(entry);
    fs::remove(bundle + "/version.txt");
    for (const std::string& package : packages) WriteFile(data + "/" + package);
    if (userVersion != absent) WriteFile(data + "/version.txt", userVersion);
    if (bundleVersion != absent) WriteFile(bundle + "/version.txt", bundleVersion);
    EXPECT_EQ(loaded == absent ? Scenario("no_package") : Replace(Started(), "mrd-1.umo", loaded),
              Launch());
  }
}

TEST_F(InstalledTest, GreatestRuntimeIsStartedAndNoOther) {
  for (const char* name : {"vek-10", "vek-9", "VEK-99"}) AddRuntime(data + "/runtime/" + name);
  EXPECT_EQ(Replace(Started(), "vek-1", "vek-9"), Launch());
  WriteFile(data + "/runtime/zzzz");
  EXPECT_EQ(Scenario("no_runtime"), Launch());
}

TEST_F(InstalledTest, FailedStartIsToldAndLeavesAnEmptyMarkerFile) {
  AddRuntime(data + "/runtime/vek-1", "");
  const std::set<fs::directory_entry> before(fs::directory_iterator("/tmp"), {});
  int noticed = 0;  // a slow child may fail after the launcher has looked
  for (int i = 0; i < 20; ++i)
    if (Finish(Start()) == Scenario("failed_start")) ++noticed;
  EXPECT_GE(noticed, 3);
  for (int markers = 0; markers < 20;)
    for (const fs::directory_entry& entry : fs::directory_iterator("/tmp"))
      if (before.count(entry) == 0 && entry.path().filename().string().rfind("file", 0) == 0)
        markers += fs::is_empty(entry) && fs::remove(entry) ? 1 : 0;
}

TEST_F(LaunchTest, UserDataDirectoryIsFoundAndOnlyTheApplicationsIsCreated) {
  const std::string home = root + "/home", share = home + "/.local/share";
  const std::string deep = userData + Replace("0000", "0", "/" + std::string(200, 'u')) + "/";
  const std::string longest = deep + std::string(1023 - deep.size(), 'u');
  for (const std::string& directory : {share, longest, longest + "u"}) {
    environment = {"HOME=" + home, "XDG_DATA_HOME=" + (directory == share ? "x" : directory + "/")};
    EXPECT_EQ(Scenario("no_package"), Launch());
    EXPECT_FALSE(fs::exists(directory));
    WriteFile(directory);  // not a directory
    EXPECT_EQ(Scenario("no_package"), Launch());
    fs::remove(directory);
    fs::create_directory(directory);
    EXPECT_EQ(Scenario("no_package"), Launch());
    EXPECT_EQ(directory != longest + "u", fs::exists(directory + "/Torvane/Torvane Odrel 2.2"));
  }
  environment = {"XDG_DATA_HOME=" + userData};
  WriteFile(userData + "/Torvane");
  EXPECT_EQ(Scenario("no_data_directory"), Launch());
}

// No file grows beyond 9000 bytes: with SIG_IGN the disk is full, with SIG_DFL the launch is
// killed.
Step LimitFiles(sighandler_t onLimit) {
  return [onLimit] {
    dup2(1, 2);
    const rlimit limit = {9000, 9000}, noCore = {0, 0};
    setrlimit(RLIMIT_FSIZE, &limit);
    setrlimit(RLIMIT_CORE, &noCore);
    signal(SIGXFSZ, onLimit);
  };
}

// Launches that copy: a fresh installation, and the data of earlier releases.
class InstallTest : public LaunchTest {
 protected:
  InstallTest() {
    WriteFile(bundle + "/mrd-1.umo", "package");
    AddRuntime(bundle + "/vek-1");
  }
};

TEST_F(InstallTest, FreshInstallationHasEverythingAndLeavesNothingToDo) {
  Make("fresh_installation_before");
  fs::create_directory(data + "/c");
  fs::create_hard_link(oldData + "0/c/itself", data + "/c/itself");
  EXPECT_EQ(Scenario("fresh_installation"), LaunchAndTree(MergeStreams));
  const std::string tree = Tree();
  EXPECT_EQ(Scenario("nothing_to_do"), Launch());
  EXPECT_EQ(tree, Tree());
}

TEST_F(InstallTest, FailuresAreToldAndMendedByLaterLaunches) {
  Make("failures_before");
  EXPECT_EQ(Scenario("failures"), LaunchAndTree());
  Make("failures_again_before");
  AddRuntime(bundle + "/vek-2");
  EXPECT_EQ(Scenario("failures_again"), LaunchAndTree());
  Make("failures_mended_before");
  EXPECT_EQ(Scenario("failures_mended"), LaunchAndTree());
}

TEST_F(InstallTest, FullDiskLeavesNoPartAndAnEmptierOneCompletesAll) {
  Make("full_disk_before");
  EXPECT_EQ(Scenario("full_disk"), LaunchAndTree(LimitFiles(SIG_IGN)));
  EXPECT_EQ(Scenario("full_disk_mended"), LaunchAndTree(MergeStreams));
}

TEST_F(InstallTest, KilledLaunchIsMadeGoodByTheNext) {
  for (const std::string& file :
       {oldData + "0/wide", oldData + "1/due", data + "/qrc__0.localstorage", bundle + "/mrd-2.umo",
        bundle + "/vek-1/z"}) {
    Strings trees;
    for (const Step& prepare : {Step(MergeStreams), LimitFiles(SIG_DFL)}) {
      fs::remove_all(userData);
      Make("killed_before");
      WriteFile(file, std::string(30000, 'l'));
      const std::string left = LaunchAndTree(prepare);
      EXPECT_EQ(!trees.empty(), left.find(".part 600 9000 bytes") != std::string::npos ||
                                    left.find(".part/z 600 9000 bytes") != std::string::npos);
      Launch();
      trees.push_back(Tree());
    }
    EXPECT_EQ(trees[0], trees[1]);
  }
}

TEST_F(InstallTest, LaunchesAtOnceTakeTurns) {
  AddRuntime(bundle + "/vek-1", "#!/bin/true\n");
  Make("at_once_before");
  const std::set<std::string> inTurn = {Finish(Start({}, MergeStreams)),
                                        Finish(Start({}, MergeStreams))};
  fs::remove_all(userData);
  Make("at_once_before");
  const pid_t first = Start({}, MergeStreams, "1"), second = Start({}, MergeStreams, "2");
  const std::set<std::string> atOnce = {Finish(first, "1"), Finish(second, "2")};
  EXPECT_EQ(inTurn, atOnce);
}

TEST_F(InstallTest, LaunchNeedsNoStreamsAndHandsOnIgnoredSignals) {
  const std::string unread = "-- standard error\n" + Started().substr(Started().find("-- exit"));
  const Step closePipes = [] {
    int ends[2];
    if (pipe(ends) == 0) dup2(ends[1], 1);
    MergeStreams();
    for (const int end : ends) close(end);
  };
  EXPECT_EQ(unread, Launch({}, closePipes));
  fs::remove_all(data);
  EXPECT_EQ(unread, Launch({}, [] {
              for (const int stream : {0, 1, 2}) close(stream);
            }));
  EXPECT_EQ(Scenario("ignored_signal"), Launch({}, [] { signal(SIGPIPE, SIG_IGN); }));
}

// Launches that have nothing to copy: what they select, hand to the runtime and end with.
#include "tests/launch_fixture.h"

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
    EXPECT_EQ(loaded == absent ? Expected("no_package") : Replace(Started(), "mrd-1.umo", loaded),
              Launch());
  }
}

TEST_F(InstalledTest, GreatestRuntimeIsStartedAndNoOther) {
  for (const char* name : {"vek-10", "vek-9", "VEK-99"}) AddRuntime(data + "/runtime/" + name);
  EXPECT_EQ(Replace(Started(), "vek-1", "vek-9"), Launch());
  WriteFile(data + "/runtime/zzzz");
  EXPECT_EQ(Expected("no_runtime"), Launch());
}

TEST_F(InstalledTest, FailedStartIsToldAndLeavesAnEmptyMarkerFile) {
  WriteFile(Executable(data + "/runtime/vek-1"));
  int noticed = 0;  // a slow child may fail after the launcher has looked
  for (int i = 0; i < 10; ++i) {
    const std::set<fs::directory_entry> before(fs::directory_iterator("/tmp"), {});
    if (Finish(Start()) == Expected("failed_start")) ++noticed;
    for (bool found = false; !found;) {
      for (const fs::directory_entry& entry : fs::directory_iterator("/tmp")) {
        if (before.count(entry) != 0 || entry.path().filename().string().rfind("file", 0) != 0)
          continue;
        found = fs::is_empty(entry) && fs::remove(entry);
        EXPECT_TRUE(found);
      }
    }
  }
  EXPECT_GE(noticed, 5);
}

TEST_F(LaunchTest, UserDataDirectoryIsFoundButNotCreated) {
  const std::string home = root + "/home", share = home + "/.local/share";
  const std::string deep = userData + Replace("0000", "0", "/" + std::string(200, 'u')) + "/";
  const std::string longest = deep + std::string(1023 - deep.size(), 'u');
  for (const std::string& directory : {share, longest, longest + "u"}) {
    environment = {"HOME=" + home, "XDG_DATA_HOME=" + (directory == share ? "x" : directory + "/")};
    EXPECT_EQ(Expected("no_package"), Launch());
    EXPECT_FALSE(fs::exists(directory));
    WriteFile(directory);  // not a directory
    EXPECT_EQ(Expected("no_package"), Launch());
    fs::remove(directory);
    fs::create_directory(directory);
    EXPECT_EQ(Expected("no_package"), Launch());
    EXPECT_EQ(directory != longest + "u", fs::exists(directory + "/Torvane/Torvane Odrel 2.2"));
  }
}

TEST_F(LaunchTest, LaunchEndsWithoutItsDataDirectory) {
  WriteFile(userData + "/Torvane");
  EXPECT_EQ(Expected("no_data_directory"), Launch());
}

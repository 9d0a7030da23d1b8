// Launches that copy: a fresh installation, and the data of earlier releases.
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/launch_fixture.h"

class InstallTest : public LaunchTest {
 protected:
  InstallTest() {
    WriteFile(bundle + "/mrd-1.umo", large);
    AddRuntime(bundle + "/vek-1");
  }

  // A launch that must start the bundle's runtime; returns the lines of both streams.
  std::string LaunchInstalled() {
    const Outcome outcome = Launch({}, MergeStreams);
    EXPECT_EQ(0, outcome.exitCode) << outcome.out;
    ExpectStarted(runtime, "mrd-1.umo");
    return outcome.out;
  }

  const std::string large = std::string(30000, 'l'), runtime = data + "/runtime/vek-1";
  const std::string oldStorage = data + "/qrc__0.localstorage";
  const std::string newStorage = data + "/Local Storage/umop__0.localstorage";
};

TEST_F(InstallTest, CopyMissingOutOfOrderOrReportedWrongly) {
  for (const char* file : {"/c/z", "/a/x", "/.b"}) WriteFile(oldData[0] + file);
  fs::create_directories(oldData[1] + "/empty");
  WriteFile(oldData[2] + "/.b", "newest");
  WriteFile(oldData[2] + "/qrc__0.localstorage", "storage");
  for (const char* file : {"/MRD-2.UMO", "/vek-0/x", "/vek-1/z", "/vek-1/U/V/W/X/f"})
    WriteFile(bundle + file);
  std::string lines = ReadFile(FRESH_INSTALLATION);
  const Strings words = {"$DATA", "$BUNDLE", "$OLD0", "$OLD1", "$OLD2"};
  const Strings paths = {data, bundle, oldData[0], oldData[1], oldData[2]};
  for (std::size_t i = 0, at; i < words.size(); ++i)
    while ((at = lines.find(words[i])) != std::string::npos)
      lines.replace(at, words[i].size(), paths[i]);
  EXPECT_EQ(lines, LaunchInstalled());

  // Nothing is left to do, but for a marker removed by hand.
  EXPECT_TRUE(fs::remove(oldData[1] + "/migrated"));
  const Outcome again = Launch();
  ExpectStarted(runtime, "mrd-1.umo");
  EXPECT_EQ("Priming " + data + "/MRD-2.UMO\nPriming " + data + "/mrd-1.umo\n", again.err);
  EXPECT_EQ("Dianostics: ON\nMigrating application data from \"" + oldData[1] + "\" to \"" + data +
                "\"\nLoading Odrel package \"" + data + "/mrd-1.umo\"\nLoading Vekara at \"" +
                Executable(runtime) + "\"\n",
            again.out);
  EXPECT_EQ("newest", ReadFile(data + "/.b"));
}

class FullDiskTest : public InstallTest, public testing::WithParamInterface<rlim_t> {};

TEST_P(FullDiskTest, PartKeptOrNotCompletedLater) {
  const std::string storage(12000, 's');
  WriteFile(oldData[0] + "/shared", "small");
  WriteFile(oldData[1] + "/shared", large);
  WriteFile(oldStorage, storage);
  WriteFile(bundle + "/vek-1/z", large);
  Launch({}, [] {
    const rlimit limit = {GetParam(), GetParam()};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
  });
  EXPECT_FALSE(fs::exists(oldData[1] + "/migrated"));
  EXPECT_EQ(GetParam() < storage.size(), fs::exists(oldStorage));
  EXPECT_EQ(GetParam() >= storage.size(), fs::exists(newStorage));
  for (const std::string& part : {data + "/shared", data + "/mrd-1.umo", runtime})
    EXPECT_FALSE(fs::exists(part));

  LaunchInstalled();
  for (const char* file : {"/shared", "/mrd-1.umo", "/runtime/vek-1/z"})
    EXPECT_EQ(large, ReadFile(data + file));
  EXPECT_EQ(storage + storage, ReadFile(newStorage) + ReadFile(oldStorage + "_migrated"));
  EXPECT_TRUE(fs::exists(oldData[1] + "/migrated") && !fs::exists(oldStorage));
}
INSTANTIATE_TEST_SUITE_P(Limits, FullDiskTest, testing::Values(0, 100, 9000, 20000));

TEST_F(InstallTest, RepeatedMigrationReplacesWhatTheApplicationWrote) {
  const std::string broken = oldData[0] + "/broken", marker = oldData[2] + "/migrated",
                    file = data + "/file";
  WriteFile(oldData[0] + "/file", "old");
  WriteFile(oldData[2] + "/file", "newer");
  for (const std::string& link : {broken, marker}) fs::create_symlink("nowhere", link);
  WriteFile(oldData[1] + "/occupied");
  fs::create_directories(data + "/occupied");  // a directory in the place of the file
  LaunchInstalled();
  EXPECT_EQ("newer", ReadFile(file));

  WriteFile(file, "application's");
  EXPECT_TRUE(Contains(LaunchInstalled(),
                       "src good: 0 dest good: 1\nsrc state: fail 1 bad 0\n"
                       "dest state: fail 0 bad 0\nFailed to copy \"" +
                           broken + "\" to \"" + data + "/broken\"\n"));
  EXPECT_EQ("application's", ReadFile(file));
  EXPECT_FALSE(fs::exists(oldData[1] + "/migrated"));

  // Both complete in one launch: the newer release's copy stays.
  for (const std::string& link : {broken, marker}) fs::remove(link);
  WriteFile(broken, "mended");
  fs::remove(file);
  LaunchInstalled();
  EXPECT_EQ("newer", ReadFile(file));
  EXPECT_EQ("mended", ReadFile(data + "/broken"));
  EXPECT_TRUE(fs::exists(marker));

  // A marker removed by hand makes it a first migration again.
  EXPECT_TRUE(fs::remove(oldData[0] + "/migrated"));
  LaunchInstalled();
  EXPECT_EQ("old", ReadFile(file));
}

TEST_F(InstallTest, PartTakenForTheWhole) {
  std::string deep = "/vek-2";
  for (int i = 0; i < 800; ++i) deep += "/d";
  WriteFile(bundle + deep + "/a");
  fs::create_symlink("nowhere", bundle + deep + "/b");
  ASSERT_EQ(0, mkfifo((bundle + "/mrd-0.umo").c_str(), 0600));  // nobody ever writes into it
  AddRuntime(runtime);
  const Outcome outcome = Launch({}, [] {
    const rlimit limit = {64, 64};
    setrlimit(RLIMIT_NOFILE, &limit);
  });
  ExpectStarted(runtime, "mrd-1.umo");
  EXPECT_TRUE(Contains(outcome.err,
                       "dest state: fail 0 bad 0\nFailed to prime Odrel app package "
                       "\"mrd-0.umo\"\n"));
  EXPECT_TRUE(Contains(outcome.err, deep + "/a\nCopyFile success: 1\n"));
  EXPECT_TRUE(Contains(outcome.err, "Failed to prime Vekara runtime \"" + bundle + "/vek-2\"\n"));
  for (const char* part : {"/mrd-0.umo", "/runtime/vek-2"}) EXPECT_FALSE(fs::exists(data + part));

  WriteFile(data + "/runtime/vek-2", "user's");
  EXPECT_EQ(4, Launch().exitCode);
  EXPECT_EQ("user's", ReadFile(data + "/runtime/vek-2"));
}

TEST_F(InstallTest, StorageLostOrMovedTwice) {
  const Strings cases[] = {
      // a file in the way, and the line
      {newStorage, ""},
      {data + "/Local Storage",
       "Failed to migrate localStorage \"" + oldStorage + "\" to \"" + newStorage + "\"\n"},
      {oldStorage + "_migrated/file", "Failed to complete localStorage migration\n"},
  };
  for (const Strings& test : cases) {
    fs::remove_all(data);
    WriteFile(oldStorage, "storage");
    WriteFile(test[0], "other");
    const std::string out = LaunchInstalled();
    EXPECT_TRUE(Contains(out, test[1]));
    EXPECT_EQ(!test[1].empty(), Contains(out, "localStorage"));
    EXPECT_EQ("storage other", ReadFile(oldStorage) + " " + ReadFile(test[0]));
  }
}

TEST_F(InstallTest, DataEmptiedByCopyingItOntoItself) {
  WriteFile(oldData[2] + "/file", "precious");
  fs::create_directory_symlink("Torvane, Inc.", userData + "/Torvane");
  LaunchInstalled();
  EXPECT_EQ("precious", ReadFile(data + "/file"));
}

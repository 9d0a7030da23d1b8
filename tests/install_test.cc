// Launches that copy: a fresh installation, and the data of earlier releases.
#include <sys/resource.h>

#include <csignal>

#include "tests/launch_fixture.h"

namespace fs = std::filesystem;

namespace {

const char* const oldStorage = "/qrc__0.localstorage";
const char* const newStorage = "/Local Storage/umop__0.localstorage";

std::string Copy(const std::string& source, const std::string& destination) {
  return "Attempt CopyFile from " + source + " to " + destination + "\nCopyFile success: 1\n";
}

}  // namespace

class InstallTest : public LaunchTest {
 protected:
  InstallTest() {
    WriteFile(bundle + "/mrd-1.umo", std::string(30000, '1'));
    AddRuntime(bundle + "/vek-1");
  }

  // A launch that must start the bundle's runtime.
  Outcome LaunchInstalled() {
    Outcome outcome = Launch({}, MergeStreams);
    EXPECT_EQ(0, outcome.exitCode);
    EXPECT_EQ(CommandLine(runtime, "mrd-1.umo"), RecordedArguments(RuntimeExecutable(runtime)));
    fs::remove(RuntimeExecutable(runtime) + ".environment");
    return outcome;
  }

  const std::string runtime = data + "/runtime/vek-1";
};

TEST_F(InstallTest, CopyMissingOutOfOrderOrReportedWrongly) {
  for (const char* file : {"/c/z", "/a/x", "/a/y", "/.b", "/shared"})
    WriteFile(oldData[0] + file, file);
  WriteFile(oldData[2] + "/shared", "newest");
  WriteFile(oldData[2] + oldStorage, "storage");
  fs::create_directories(oldData[1] + "/empty");
  for (const char* file :
       {"/MRD-2.UMO", "/vek-0/x", "/vek-1/z", "/vek-1/a", "/vek-1/d1/f", "/vek-1/d2/f"})
    WriteFile(bundle + file, file);

  const auto migrating = [this](int i) {
    return "Migrating application data from \"" + oldData[i] + "\" to \"" + data + "\"\n";
  };
  const auto old = [this](int i, const std::string& file) {
    return Copy(oldData[i] + file, data + file);
  };
  const auto primed = [this](const std::string& file) {
    return Copy(bundle + "/vek-1" + file, runtime + file);
  };
  const std::string storage = data + oldStorage, priming = "Priming " + data;
  const std::string loading = "Loading Odrel package \"" + data + "/mrd-1.umo\"\n";
  const std::string starting = "Loading Vekara at \"" + RuntimeExecutable(runtime) + "\"\n";
  EXPECT_EQ("Dianostics: ON\n" + migrating(0) + old(0, "/.b") + old(0, "/shared") + old(0, "/a/x") +
                old(0, "/a/y") + old(0, "/c/z") + migrating(1) + migrating(2) + old(2, oldStorage) +
                old(2, "/shared") + "Migrating localStorage from \"" + storage + "\" to \"" + data +
                newStorage + "\"\n" + Copy(storage, data + newStorage) +
                Copy(storage, storage + "_migrated") + priming + "/MRD-2.UMO\n" +
                Copy(bundle + "/MRD-2.UMO", data + "/MRD-2.UMO") + priming + "/mrd-1.umo\n" +
                Copy(bundle + "/mrd-1.umo", data + "/mrd-1.umo") + loading + primed("/a") +
                primed("/z") + primed("/d2/f") + primed("/d1/f") + primed(RuntimeExecutable("")) +
                starting,
            LaunchInstalled().out);
  EXPECT_EQ(
      "Dianostics: ON\n" + priming + "/MRD-2.UMO\n" + priming + "/mrd-1.umo\n" + loading + starting,
      LaunchInstalled().out);

  std::map<std::string, std::string> expected = {{".b", "/.b"},
                                                 {"a/x", "/a/x"},
                                                 {"a/y", "/a/y"},
                                                 {"c/z", "/c/z"},
                                                 {"shared", "newest"},
                                                 {"Local Storage/umop__0.localstorage", "storage"},
                                                 {"qrc__0.localstorage_migrated", "storage"}};
  for (const auto& [file, content] : Files(bundle)) {
    if (file.rfind("vek-1", 0) == 0) expected["runtime/" + file] = content;
    if (file == "MRD-2.UMO" || file == "mrd-1.umo") expected[file] = content;
  }
  EXPECT_EQ(expected, Files(data));
}

class FullDiskTest : public InstallTest, public testing::WithParamInterface<rlim_t> {};

TEST_P(FullDiskTest, PartKeptOrNotCompletedLater) {
  const std::string large(30000, 'l'), storage(12000, 's');
  WriteFile(oldData[0] + "/shared", "small");
  WriteFile(oldData[1] + "/shared", large);
  WriteFile(data + oldStorage, storage);
  WriteFile(bundle + "/vek-1/z", large);
  Launch({}, [] {
    const rlimit limit = {GetParam(), GetParam()};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
  });
  EXPECT_EQ(GetParam() >= 5, fs::exists(oldData[0] + "/migrated"));
  EXPECT_FALSE(fs::exists(oldData[1] + "/migrated"));
  EXPECT_EQ(large, ReadFile(oldData[1] + "/shared"));
  EXPECT_EQ(GetParam() < storage.size(), fs::exists(data + oldStorage));
  EXPECT_EQ(GetParam() >= storage.size(), fs::exists(data + newStorage));
  EXPECT_FALSE(fs::exists(data + "/mrd-1.umo") || fs::exists(runtime));

  LaunchInstalled();
  for (const char* file : {"/shared", "/runtime/vek-1/z"}) EXPECT_EQ(large, ReadFile(data + file));
  EXPECT_EQ(storage, ReadFile(data + newStorage));
  EXPECT_EQ(storage, ReadFile(data + oldStorage + "_migrated"));
  EXPECT_FALSE(fs::exists(data + oldStorage));
  EXPECT_TRUE(fs::exists(oldData[0] + "/migrated") && fs::exists(oldData[1] + "/migrated"));
}
INSTANTIATE_TEST_SUITE_P(Limits, FullDiskTest, testing::Values(0, 100, 9000, 20000));

TEST_F(InstallTest, RepeatedMigrationReplacesWhatTheApplicationWrote) {
  const std::string broken = oldData[0] + "/broken", marker = oldData[2] + "/migrated";
  WriteFile(oldData[0] + "/file", "old");
  WriteFile(oldData[2] + "/file", "newer");
  for (const std::string& link : {broken, marker}) fs::create_symlink("nowhere", link);
  LaunchInstalled();
  EXPECT_EQ("newer", ReadFile(data + "/file"));

  WriteFile(data + "/file", "application's");
  const std::string out = LaunchInstalled().out;
  EXPECT_TRUE(Contains(out, "dest state: fail 0 bad 0\nFailed to copy \"" + broken + "\" to \"" +
                                data + "/broken\"\n"));
  EXPECT_EQ("application's", ReadFile(data + "/file"));

  // Both complete in one launch: the newer release's copy stays.
  for (const std::string& link : {broken, marker}) fs::remove(link);
  WriteFile(broken, "mended");
  fs::remove(data + "/file");
  LaunchInstalled();
  EXPECT_EQ("newer", ReadFile(data + "/file"));
  EXPECT_EQ("mended", ReadFile(data + "/broken"));
  EXPECT_TRUE(fs::exists(marker));

  // A marker removed by hand makes it a first migration again.
  EXPECT_TRUE(fs::remove(oldData[0] + "/migrated"));
  WriteFile(data + "/file", "application's");
  LaunchInstalled();
  EXPECT_EQ("old", ReadFile(data + "/file"));
}

TEST_F(InstallTest, PartTakenForTheWhole) {
  fs::create_directory_symlink(bundle, bundle + "/mrd-0.umo");  // opens, and cannot be read
  WriteFile(bundle + "/vek-2/a");
  fs::create_symlink("nowhere", bundle + "/vek-2/b");
  AddRuntime(runtime);
  const std::string out = LaunchInstalled().out;
  EXPECT_TRUE(
      Contains(out, "CopyFile success: 0\nFailed to prime Odrel app package \"mrd-0.umo\"\n"));
  EXPECT_TRUE(Contains(out, "Failed to prime Vekara runtime \"" + bundle + "/vek-2\"\n"));
  EXPECT_FALSE(fs::exists(data + "/mrd-0.umo"));
  EXPECT_FALSE(fs::exists(data + "/runtime/vek-2"));

  WriteFile(data + "/runtime/vek-2", "not the launcher's");
  EXPECT_EQ(4, Launch().exitCode);
  EXPECT_EQ("not the launcher's", ReadFile(data + "/runtime/vek-2"));
}

TEST_F(InstallTest, StorageLostOrMovedTwice) {
  const std::string backup = std::string(oldStorage) + "_migrated";
  struct Case {
    std::string directory, file;  // in the way
    std::string line;             // null: none
    bool arrived;
  };
  const Case cases[] = {
      {"", newStorage, "", false},
      {"", "/Local Storage",
       "Failed to migrate localStorage \"" + data + oldStorage + "\" to \"" + data + newStorage +
           "\"\n",
       false},
      {backup, "", "Failed to complete localStorage migration\n", true},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.line);
    fs::remove_all(data);
    WriteFile(data + oldStorage, "storage");
    if (!test.file.empty()) WriteFile(data + test.file, "other");
    if (!test.directory.empty()) fs::create_directory(data + test.directory);
    const std::string out = LaunchInstalled().out;
    EXPECT_TRUE(Contains(out, test.line));
    EXPECT_EQ(!test.line.empty(), Contains(out, "localStorage"));
    EXPECT_EQ("storage", ReadFile(data + oldStorage));
    EXPECT_EQ(test.arrived, ReadFile(data + newStorage) == "storage");
    if (!test.file.empty()) {
      EXPECT_EQ("other", ReadFile(data + test.file));
    }
  }
}

TEST_F(InstallTest, DataEmptiedByCopyingItOntoItself) {
  WriteFile(oldData[2] + "/file", "precious");
  fs::create_directory_symlink("Torvane, Inc.", userData + "/Torvane");
  LaunchInstalled();
  EXPECT_EQ("precious", ReadFile(data + "/file"));
}

TEST_F(InstallTest, DeepRuntimeCutOffOrNotRemoved) {
  std::string deep = "/vek-1";
  for (int i = 0; i < 800; ++i) deep += "/d";
  WriteFile(bundle + deep + "/file", "deep");
  LaunchInstalled();
  EXPECT_EQ("deep", ReadFile(data + "/runtime" + deep + "/file"));

  fs::remove_all(runtime);
  fs::create_symlink("nowhere", bundle + deep + "/nowhere");
  Launch({}, [] {
    const rlimit limit = {64, 64};
    setrlimit(RLIMIT_NOFILE, &limit);
  });
  EXPECT_FALSE(fs::exists(runtime));
}

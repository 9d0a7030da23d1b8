// Launches that copy: a fresh installation, and the data of earlier releases.
#include <sys/resource.h>

#include <csignal>

#include "tests/launch_fixture.h"

namespace {

const std::string large(30000, 'l');

// A prepare: no file grows beyond 9000 bytes, as on a full disk.
void LimitFiles() {
  dup2(1, 2);
  const rlimit limit = {9000, 9000};
  setrlimit(RLIMIT_FSIZE, &limit);
  signal(SIGXFSZ, SIG_IGN);
}

// A prepare: the launch is killed in the middle of the first file larger than that.
void KillInLargeFile() {
  const rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  LimitFiles();
  signal(SIGXFSZ, SIG_DFL);
}

}  // namespace

class InstallTest : public LaunchTest {
 protected:
  InstallTest() {
    WriteFile(bundle + "/mrd-1.umo", "package");
    AddRuntime(bundle + "/vek-1");
  }
};

TEST_F(InstallTest, FreshInstallationHasEverythingAndLeavesNothingToDo) {
  for (const char* file : {"/c/z", "/a/x", "/.b"}) WriteFile(oldData + "0" + file, "old");
  fs::create_symlink("../c/z", oldData + "0/a/file");
  fs::create_symlink("a", oldData + "0/directory");
  chmod((oldData + "0/a/x").c_str(), 0640);
  fs::create_directories(oldData + "1/empty");
  WriteFile(oldData + "2/.b", "newest");
  WriteFile(oldData + "2/qrc__0.localstorage", "storage");
  for (const char* file : {"/MRD-2.UMO", "/vek-0/x", "/vek-1/z", "/vek-1/F/Versions/A/Resources/r"})
    WriteFile(bundle + file);
  fs::create_symlink("A", bundle + "/vek-1/F/Versions/Current");
  fs::create_symlink("Versions/Current/Resources", bundle + "/vek-1/F/Resources");
  EXPECT_EQ(Expected("fresh_installation"), LaunchAndTree(MergeStreams));

  const std::string tree = Tree();
  EXPECT_EQ(Expected("nothing_to_do"), Launch());
  EXPECT_EQ(tree, Tree());
}

TEST_F(InstallTest, FailuresAreToldAndMendedByLaterLaunches) {
  for (const char* file : {"0/fine", "0/place", "0/shared", "0/under/deep/file", "1/shared"})
    WriteFile(oldData + file, std::string("old ") + file[0]);
  WriteFile(oldData + "0/rights");
  fs::create_symlink("nowhere", oldData + "0/broken");
  mkfifo((oldData + "0/pipe").c_str(), 0600);
  fs::create_symlink(".", oldData + "1/link");
  fs::create_directory(oldData + "2");
  fs::create_symlink("no/where", oldData + "2/migrated");
  for (const char* file : {"/link/kept", "/place/kept", "/shared/kept", "/under", "/Local Storage"})
    WriteFile(data + file, "application's");
  fs::create_symlink("/proc/self/comm", data + "/rights");  // takes bytes, but no permissions
  WriteFile(data + "/qrc__0.localstorage", "storage");
  mkfifo((bundle + "/mrd-0.umo").c_str(), 0600);
  WriteFile(bundle + "/vek-2");
  EXPECT_EQ(Expected("failures"), LaunchAndTree());

  for (const char* file : {"/shared", "/under", "/Local Storage"}) fs::remove_all(data + file);
  for (const char* file : {"/fine", "/migrated"}) WriteFile(data + file, "application's");
  WriteFile(data + "/qrc__0.localstorage_migrated/in the way");
  fs::remove(bundle + "/vek-2");
  AddRuntime(bundle + "/vek-2");
  WriteFile(bundle + "/vek-2/a");
  fs::create_symlink("nowhere", bundle + "/vek-2/b");
  EXPECT_EQ(Expected("failures_again"), LaunchAndTree());

  for (const char* cause : {"0/broken", "0/pipe", "2/migrated"}) fs::remove(oldData + cause);
  for (const char* cause : {"/link", "/place", "/rights"}) fs::remove_all(data + cause);
  for (const char* cause : {"/mrd-0.umo", "/vek-2/b"}) fs::remove(bundle + cause);
  EXPECT_EQ(Expected("failures_mended"), LaunchAndTree());
}

TEST_F(InstallTest, FullDiskLeavesNoPartAndAnEmptierOneCompletesAll) {
  WriteFile(oldData + "0/shared", "small");
  WriteFile(oldData + "1/shared", large);
  WriteFile(data + "/qrc__0.localstorage", large);
  WriteFile(bundle + "/mrd-2.umo", large);
  fs::create_symlink(userData + "/elsewhere", data + "/mrd-2.umo");
  WriteFile(bundle + "/vek-1/z", large);
  EXPECT_EQ(Expected("full_disk"), LaunchAndTree(LimitFiles));
  EXPECT_EQ(Expected("full_disk_mended"), LaunchAndTree(MergeStreams));
}

TEST_F(InstallTest, KilledLaunchIsMadeGoodByTheNext) {
  const std::string files[] = {oldData + "1/due", data + "/qrc__0.localstorage",
                               bundle + "/mrd-2.umo", bundle + "/vek-1/z"};
  for (const std::string& file : files) {
    std::string trees[2];  // undisturbed and killed
    for (std::string& tree : trees) {
      fs::remove_all(userData);
      for (const std::string& other : files) WriteFile(other, other == file ? large : "small");
      WriteFile(oldData + "1/kept", "old");
      for (const char* kept : {"/kept", "/Torvane Odrel 2.1.unmarked"}) WriteFile(data + kept);
      const bool killed = &tree == &trees[1];
      EXPECT_EQ(killed, Launch({}, killed ? KillInLargeFile : MergeStreams).find("-- signal") !=
                            std::string::npos);
      Launch();
      tree = Tree();
    }
    EXPECT_EQ(trees[0], trees[1]);
  }
}

// Its user has put a link in the place of the runtime that the killed launch was copying.
TEST_F(InstallTest, LinkThatIsNoInterruptedCopyStaysWithItsTarget) {
  Launch({}, KillInLargeFile);
  const std::string primed = data + "/runtime/vek-1";
  fs::remove_all(primed);
  fs::create_symlink(bundle + "/vek-1", primed);
  Launch();
  EXPECT_TRUE(fs::is_symlink(primed) && fs::exists(Executable(primed)));
}

TEST_F(InstallTest, LaunchesAtOnceTakeTurns) {
  fs::copy_file("/bin/true", Executable(bundle + "/vek-1"), fs::copy_options::overwrite_existing);
  const auto setUp = [this] {
    fs::remove_all(userData);
    for (const char* file : {"0/a", "0/b", "0/c", "1/a", "1/b"}) WriteFile(oldData + file, large);
  };
  setUp();
  const std::set<std::string> inTurn = {Finish(Start({}, MergeStreams)),
                                        Finish(Start({}, MergeStreams))};
  setUp();
  const pid_t first = Start({}, MergeStreams, "1"), second = Start({}, MergeStreams, "2");
  const std::set<std::string> atOnce = {Finish(first, "1"), Finish(second, "2")};
  EXPECT_EQ(inTurn, atOnce);
}

TEST_F(InstallTest, LaunchNeedsNoStreamsAndHandsOnIgnoredSignals) {
  const std::string unread = "-- standard error\n" + Started().substr(Started().find("-- exit"));
  EXPECT_EQ(unread, Launch({}, [] {
              int ends[2];
              if (pipe(ends) == 0) dup2(ends[1], 1);
              MergeStreams();
              for (const int end : ends) close(end);
            }));
  fs::remove_all(data);
  EXPECT_EQ(unread, Launch({}, [] {
              for (const int stream : {0, 1, 2}) close(stream);
            }));
  EXPECT_EQ(Expected("ignored_signal"), Launch({}, [] { signal(SIGPIPE, SIG_IGN); }));
}

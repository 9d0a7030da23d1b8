// The utility library, where a whole launch would not show the fault.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/launch_fixture.h"
#include "util/file_util.h"
#include "util/string_util.h"

namespace fs = std::filesystem;

class UtilTest : public LaunchTest {};

TEST_F(UtilTest, TokensEmptyOrLeftOver) {
  struct Case {
    const char *text, *delimiters;
    Strings tokens;
  };
  for (const Case& test :
       {Case{"/Users/x//Library/", "/", {"Users", "x", "Library"}}, Case{"//", "/", {}},
        Case{"", "", {}}, Case{"a,b;;c", ",;", {"a", "b", "c"}}, Case{"abc", "", {"abc"}}}) {
    Strings tokens = {"left over"};
    EXPECT_EQ(test.tokens.size(), torvane::Tokenize(test.text, test.delimiters, &tokens));
    EXPECT_EQ(test.tokens, tokens);
  }
}

TEST_F(UtilTest, LinksFollowedTheWrongWay) {
  fs::create_directory_symlink(bundle, root / "to directory");
  fs::create_symlink("nowhere", root / "to nowhere");
  EXPECT_TRUE(torvane::FileExists(root / "to directory"));
  EXPECT_FALSE(torvane::DirectoryExists(root / "to directory"));
  EXPECT_FALSE(torvane::FileExists(root / "to nowhere"));
  EXPECT_TRUE(torvane::DeleteFile(root / "to directory"));
  EXPECT_TRUE(torvane::DirectoryExists(bundle));
  EXPECT_FALSE(torvane::DeleteFile(bundle));
}

TEST_F(UtilTest, EntriesMissingOrUnsorted) {
  const std::string directory = root / "list";
  for (const char* name : {"b.txt", "A.txt", ".hidden", "a\\b"}) WriteFile(directory + "/" + name);
  fs::create_directory(directory + "/a.dir");
  EXPECT_EQ((Strings{".hidden", "A.txt", "a.dir", "a\\b", "b.txt"}),
            torvane::ListDirectory(directory));
  EXPECT_EQ((Strings{"A.txt", "a.dir", "a\\b"}), torvane::SearchDirectory(directory, "a*"));
  EXPECT_EQ(Strings{"a\\b"}, torvane::SearchDirectory(directory, "a\\*"));
  EXPECT_EQ(Strings{}, torvane::ListDirectory(directory + "/b.txt"));
}

TEST_F(UtilTest, DirectoryCreationStopsAtWhatExists) {
  WriteFile(root / "file");
  EXPECT_TRUE(torvane::MakeDirectory(""));
  EXPECT_TRUE(torvane::MakeDirectory(root.string().substr(1) + "//x/y/"));
  EXPECT_TRUE(fs::is_directory(root / "x/y"));
  EXPECT_TRUE(torvane::MakeDirectory(root / "file"));
  EXPECT_FALSE(torvane::MakeDirectory(root / "file/x"));
}

TEST_F(UtilTest, PermissionsNarrowedOrInvented) {
  int mode = 7;
  EXPECT_FALSE(torvane::GetPermissions(root / "missing", &mode));
  EXPECT_EQ(7, mode);
  WriteFile(root / "file");
  EXPECT_TRUE(torvane::SetPermissions(root / "file", 0104755));
  EXPECT_TRUE(torvane::GetPermissions(root / "file", &mode));
  EXPECT_EQ(0104755, mode);
  EXPECT_FALSE(torvane::SetPermissions(root / "missing", 0755));
}

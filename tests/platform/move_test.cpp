// Renaming files.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include "tests/support/temp_dir.h"

namespace {

class Move : public ::testing::Test {
 protected:
  std::u16string Name(char const* name) const { return (directory_ / name).u16string(); }
  BOOL Rename(char const* from, char const* to, DWORD flags) const {
    return MoveFileExW(Name(from).c_str(), Name(to).c_str(), flags);
  }
  void Write(char const* name, BYTE content) const { test::WriteAll(directory_ / name, {content}); }
  std::vector<BYTE> Read(char const* name) const { return test::ReadAll(directory_ / name); }
  bool Exists(char const* name) const { return std::filesystem::exists(directory_ / name); }

  test::TempDir directory_;
};

TEST_F(Move, FileGetsItsNewName) {
  Write("a", 1);
  EXPECT_TRUE(Rename("a", "b", MOVEFILE_WRITE_THROUGH));
  EXPECT_FALSE(Exists("a"));
  EXPECT_EQ(Read("b"), std::vector<BYTE>{1});
}

TEST_F(Move, NameThatExistsIsKeptWithError183) {
  Write("a", 1);
  Write("b", 2);
  EXPECT_FALSE(Rename("a", "b", 0));
  EXPECT_EQ(GetLastError(), 183u);
  EXPECT_EQ(Read("a"), std::vector<BYTE>{1});
  EXPECT_EQ(Read("b"), std::vector<BYTE>{2});
}

TEST_F(Move, NameThatExistsIsReplacedOnRequest) {
  Write("a", 1);
  Write("b", 2);
  EXPECT_TRUE(Rename("a", "b", MOVEFILE_REPLACE_EXISTING));
  EXPECT_FALSE(Exists("a"));
  EXPECT_EQ(Read("b"), std::vector<BYTE>{1});
}

TEST_F(Move, MissingFileIsError2) {
  EXPECT_FALSE(Rename("a", "b", 0));
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(Rename("a", "b", MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(Move, NullNamesAndUnknownFlagsAreError87) {
  Write("a", 1);
  EXPECT_FALSE(MoveFileExW(nullptr, Name("b").c_str(), 0));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(MoveFileExW(Name("a").c_str(), nullptr, 0));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(Rename("a", "b", 4));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_TRUE(Exists("a"));
}

TEST_F(Move, NameWithALoneSurrogateIsError123) {
  char16_t const lone[] = {0xD800, 0};
  EXPECT_FALSE(MoveFileExW(Name("a").c_str(), lone, 0));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_NAME);
}

}  // namespace

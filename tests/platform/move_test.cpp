// Renaming files.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <string>

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

class Replace : public Move {
 protected:
  Replace() {
    Write("old", 1);
    Write("new", 2);
  }
  BOOL Run(char const* replaced = "old", char const* replacement = "new") const {
    return ReplaceFileW(Name(replaced).c_str(), Name(replacement).c_str(), nullptr, 0, nullptr,
                        nullptr);
  }
  std::string Path(char const* name) const { return (directory_ / name).string(); }
  // The list of users with rights of their own, or nothing.
  std::string AccessList(char const* name) const {
    char list[256];
    ssize_t const size = getxattr(Path(name).c_str(), kList, list, sizeof list);
    return size > 0 ? std::string(list, static_cast<size_t>(size)) : std::string();
  }

  static constexpr char kList[] = "system.posix_acl_access";
};

TEST_F(Replace, FileTakesTheNameAndLosesItsOwn) {
  EXPECT_TRUE(Run());
  EXPECT_EQ(Read("old"), std::vector<BYTE>{2});
  EXPECT_FALSE(Exists("new"));
}

TEST_F(Replace, OwnerGroupAndPermissionsStay) {
  uid_t const owner = geteuid() == 0 ? 12'345 : geteuid();
  gid_t const group = geteuid() == 0 ? 23'456 : getegid();
  ASSERT_EQ(chown(Path("old").c_str(), owner, group), 0);
  ASSERT_EQ(chmod(Path("old").c_str(), 04751), 0);
  EXPECT_TRUE(Run());
  struct stat status {};
  ASSERT_EQ(stat(Path("old").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, owner);
  EXPECT_EQ(status.st_gid, group);
  EXPECT_EQ(status.st_mode & 07777, 04751u);
}

TEST_F(Replace, AccessListStays) {
  // Version 2; owner rw, user 12345 r, group r, mask r, others nothing.
  std::string const list(
      "\2\0\0\0"
      "\1\0\6\0\xFF\xFF\xFF\xFF"
      "\2\0\4\0\x39\x30\0\0"
      "\4\0\4\0\xFF\xFF\xFF\xFF"
      "\x10\0\4\0\xFF\xFF\xFF\xFF"
      "\x20\0\0\0\xFF\xFF\xFF\xFF",
      44);
  int const set = setxattr(Path("old").c_str(), kList, list.data(), list.size(), 0);
  std::string const before = AccessList("old");
  EXPECT_EQ(before.empty(), set != 0);
  EXPECT_TRUE(Run());
  EXPECT_EQ(AccessList("old"), before);
}

TEST_F(Replace, MissingNamesAreError2AndTheOtherFileStays) {
  EXPECT_FALSE(Run("none", "new"));
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_FALSE(Run("old", "none"));
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(Read("old"), std::vector<BYTE>{1});
  EXPECT_EQ(Read("new"), std::vector<BYTE>{2});
}

TEST_F(Replace, RefusedArgumentsAreError87) {
  std::u16string const name = Name("old");
  EXPECT_FALSE(ReplaceFileW(nullptr, name.c_str(), nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_FALSE(ReplaceFileW(name.c_str(), name.c_str(), name.c_str(), 0, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_FALSE(ReplaceFileW(name.c_str(), name.c_str(), nullptr, 1, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), 87u);
}

}  // namespace

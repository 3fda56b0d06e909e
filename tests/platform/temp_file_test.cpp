// Temporary files: the directory, the names, and what is made.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using test::TempDir;

// Sets TMPDIR, or takes it away if null, for a lifetime.
class TmpdirIs {
 public:
  explicit TmpdirIs(char const* value) {
    char const* const old = std::getenv("TMPDIR");
    if (old != nullptr) old_ = old;
    had_ = old != nullptr;
    Set(value);
  }
  ~TmpdirIs() { Set(had_ ? old_.c_str() : nullptr); }
  TmpdirIs(TmpdirIs const&) = delete;
  TmpdirIs& operator=(TmpdirIs const&) = delete;

 private:
  static void Set(char const* value) {
    value != nullptr ? setenv("TMPDIR", value, 1) : unsetenv("TMPDIR");
  }
  std::string old_;
  bool had_;
};

std::u16string TempPathWith(char const* tmpdir) {
  TmpdirIs const set(tmpdir);
  WCHAR buffer[MAX_PATH];
  DWORD const length = GetTempPathW(MAX_PATH, buffer);
  std::u16string const path = buffer;
  EXPECT_EQ(path.size(), length);
  return path;
}

TEST(GetTempPath, IsTmpdirWithItsFinalSeparator) {
  EXPECT_EQ(TempPathWith("/var/tmp"), u"/var/tmp/");
  EXPECT_EQ(TempPathWith("/var/tmp/"), u"/var/tmp/");
  EXPECT_EQ(TempPathWith("/"), u"/");
  EXPECT_EQ(TempPathWith("/tmp/\xC3\xBC"), u"/tmp/\xFC/");
}

TEST(GetTempPath, IsTmpWithoutTmpdir) {
  EXPECT_EQ(TempPathWith(nullptr), u"/tmp/");
  EXPECT_EQ(TempPathWith(""), u"/tmp/");
}

TEST(GetTempPath, SmallBufferGivesTheSizeNeeded) {
  TmpdirIs const set("/var/tmp");
  WCHAR buffer[10] = u"kept";
  EXPECT_EQ(GetTempPathW(0, nullptr), 10u);
  EXPECT_EQ(GetTempPathW(9, buffer), 10u);
  EXPECT_EQ(std::u16string(buffer), u"kept");
  EXPECT_EQ(GetTempPathW(10, buffer), 9u);
  EXPECT_EQ(std::u16string(buffer), u"/var/tmp/");
}

TEST(GetTempPath, TmpdirThatIsNoUtf8IsError123) {
  TmpdirIs const set("/tmp/\xFC");
  WCHAR buffer[MAX_PATH];
  EXPECT_EQ(GetTempPathW(MAX_PATH, buffer), 0u);
  EXPECT_EQ(GetLastError(), 123u);
}

struct TempName {
  UINT number;
  std::u16string path;
};

TempName Make(fs::path const& directory, WCHAR const* prefix, UINT unique = 0) {
  WCHAR name[MAX_PATH] = u"";
  UINT const number = GetTempFileNameW(directory.u16string().c_str(), prefix, unique, name);
  return {number, name};
}

TEST(GetTempFileName, MakesAnEmptyFileForItsOwner) {
  TempDir const dir;
  mode_t const mask = umask(0);
  TempName const name = Make(dir.path(), u"raw");
  umask(mask);
  ASSERT_NE(name.number, 0u);
  EXPECT_EQ(fs::file_size(name.path), 0u);
  EXPECT_EQ(fs::status(name.path).permissions(), fs::perms{0600});
}

TEST(GetTempFileName, IsPrefixHexadecimalNumberAndSuffix) {
  TempDir const dir;
  TempName const name = Make(dir.path(), u"~tmore");
  char number[16];
  std::snprintf(number, sizeof number, "%x", name.number);
  EXPECT_EQ(fs::path(name.path), dir / (std::string("~tm") + number + ".tmp"));
}

TEST(GetTempFileName, DirectoryMayEndInItsSeparator) {
  TempDir const dir;
  TempName const name = Make(dir.path().string() + "/", u"raw");
  EXPECT_EQ(fs::path(name.path).parent_path(), dir.path());
  EXPECT_EQ(name.path.find(u"//"), std::u16string::npos);
}

TEST(GetTempFileName, GivenNumberNamesButMakesNoFile) {
  TempDir const dir;
  TempName const name = Make(dir.path(), u"raw", 0xBEEF);
  EXPECT_EQ(name.number, 0xBEEFu);
  EXPECT_EQ(fs::path(name.path), dir / "rawbeef.tmp");
  EXPECT_FALSE(fs::exists(name.path));
}

TEST(GetTempFileName, EmptyPrefixIsAllowed) {
  TempDir const dir;
  EXPECT_EQ(fs::path(Make(dir.path(), u"", 1).path), dir / "1.tmp");
  EXPECT_EQ(fs::path(Make(dir.path(), nullptr, 1).path), dir / "1.tmp");
}

TEST(GetTempFileName, ThreadsGetDifferentFiles) {
  TempDir const dir;
  std::vector<std::vector<TempName>> names(4);
  std::vector<std::thread> threads;
  for (auto& list : names) {
    threads.emplace_back([&] {
      for (int i = 0; i < 100; ++i) list.push_back(Make(dir.path(), u"raw"));
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::u16string> all;
  for (auto const& list : names) {
    for (TempName const& name : list) all.insert(name.path);
  }
  EXPECT_EQ(all.size(), 400u);
}

// The number that would come next is taken, by a file or by a link that leads elsewhere.
TEST(GetTempFileName, ExistingNamesAreLeftAlone) {
  TempDir const dir;
  UINT const number = Make(dir.path(), u"raw").number;
  for (UINT next = number + 1; next < number + 50; ++next) {
    fs::path const taken = Make(dir.path(), u"raw", next).path;
    fs::create_symlink(dir / "target", taken);
  }
  TempName const name = Make(dir.path(), u"raw");
  EXPECT_NE(name.number, 0u);
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(name.path)));
  EXPECT_FALSE(fs::exists(dir / "target"));
}

DWORD ErrorOf(fs::path const& directory, WCHAR const* prefix) {
  SetLastError(0);
  TempName const name = Make(directory, prefix);
  EXPECT_EQ(name.number, 0u);
  EXPECT_EQ(name.path, u"");
  return GetLastError();
}

TEST(GetTempFileName, FailuresStoreNoName) {
  TempDir const dir;
  EXPECT_EQ(ErrorOf(dir / "none", u"raw"), 3u);
  EXPECT_EQ(ErrorOf("", u"raw"), 87u);
  EXPECT_EQ(ErrorOf(dir.path(), u"../"), 123u);
  EXPECT_EQ(ErrorOf(dir.path(), u"a\xD800"), 123u);
  EXPECT_EQ(ErrorOf("/" + std::string(260, 'x'), u"raw"), 206u);
}

TEST(GetTempFileName, LongestPathFillsTheName) {
  // 259 units: separator, prefix, number, suffix take 1 + 3 + 1 + 4.
  TempName const name = Make("/" + std::string(249, 'x'), u"raw", 5);
  EXPECT_EQ(name.path.size(), 259u);
  EXPECT_EQ(Make("/" + std::string(250, 'x'), u"raw", 5).number, 0u);
  EXPECT_EQ(ErrorOf("/" + std::string(258, 'x'), u"raw"), 206u);
}

}  // namespace

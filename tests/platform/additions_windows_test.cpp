// What the platform layer adds to Windows: reads at an offset, standard error, the process's end.
#include <gtest/gtest.h>
#include <io.h>
#include <sorrelin/platform/console.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/process.h>
#include <tests/support/temp_dir.h>

#include <cstdio>
#include <string>

namespace test {
namespace {

class ReadAtAnOffset : public testing::Test {
 protected:
  ReadAtAnOffset() {
    WriteAll(dir_ / "a", {'t', 'e', 'x', 't'});
    file_ = CreateFileW((dir_ / "a").c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  }
  ~ReadAtAnOffset() override { CloseHandle(file_); }

  // "failed" if the read fails.
  std::string Read(uint64_t offset, DWORD bytes) {
    std::string text(bytes, '?');
    DWORD count = 99;
    if (ReadFileAt(file_, offset, text.data(), bytes, &count) == FALSE) return "failed";
    return text.substr(0, count);
  }
  uint64_t Position() const {
    LARGE_INTEGER position{};
    SetFilePointerEx(file_, {}, &position, FILE_CURRENT);
    return static_cast<uint64_t>(position.QuadPart);
  }
  void MoveTo(int64_t offset) {
    LARGE_INTEGER position{};
    position.QuadPart = offset;
    SetFilePointerEx(file_, position, nullptr, FILE_BEGIN);
  }

  TempDir dir_;
  HANDLE file_;
};

TEST_F(ReadAtAnOffset, GivesWhatThereIsAndLeavesThePosition) {
  MoveTo(1);
  EXPECT_EQ(Read(2, 9), "xt");
  EXPECT_EQ(Read(0, 1), "t");
  EXPECT_EQ(Position(), 1u);
}

TEST_F(ReadAtAnOffset, PastTheEndIsNothing) {
  EXPECT_EQ(Read(4, 1), "");
  EXPECT_EQ(Read(uint64_t{1} << 40, 1), "");
  EXPECT_EQ(Position(), 0u);
}

TEST_F(ReadAtAnOffset, Reaches5GiB) {
  MoveTo(int64_t{5} << 30);
  DWORD count = 0;
  ASSERT_NE(WriteFile(file_, "far", 3, &count, nullptr), FALSE);
  EXPECT_EQ(Read(uint64_t{5} << 30, 9), "far");
}

TEST_F(ReadAtAnOffset, OffsetOf63BitsIs87) {
  SetLastError(0);
  EXPECT_EQ(Read(uint64_t{1} << 63, 1), "failed");
  EXPECT_EQ(GetLastError(), 87u);
}

TEST(ReadFileAt, HandleThatIsClosedIs6) {
  char byte = 0;
  SetLastError(0);
  EXPECT_EQ(ReadFileAt(INVALID_HANDLE_VALUE, 0, &byte, 1, nullptr), FALSE);
  EXPECT_EQ(GetLastError(), 6u);
}

// Standard error goes to a file for as long as this object lives.
class StandardErrorInto {
 public:
  explicit StandardErrorInto(std::filesystem::path const& path) : saved_(_dup(2)) {
    std::FILE* const file = _wfopen(path.c_str(), L"w");
    _dup2(_fileno(file), 2);
    std::fclose(file);
  }
  ~StandardErrorInto() {
    std::fflush(stderr);
    _dup2(saved_, 2);
    _close(saved_);
  }
  StandardErrorInto(StandardErrorInto const&) = delete;
  StandardErrorInto& operator=(StandardErrorInto const&) = delete;

 private:
  int saved_;
};

TEST(MuteStandardError, DropsWhatIsWrittenUntilItIsRestored) {
  TempDir const dir;
  {
    StandardErrorInto const file(dir / "errors");
    std::fputs("1", stderr);
    int const muted = MuteStandardError();
    std::fputs("2", stderr);
    RestoreStandardError(muted);
    std::fputs("3", stderr);
  }
  EXPECT_EQ(ReadAll(dir / "errors"), (std::vector<BYTE>{'1', '3'}));
}

TEST(StandardError, FileIsNoTerminal) {
  TempDir const dir;
  StandardErrorInto const file(dir / "errors");
  EXPECT_EQ(StandardErrorIsTerminal(), FALSE);
}

TEST(EndProcessDeathTest, WritesOneLineAndAborts) {
  EXPECT_DEATH(EndProcess("the line does not fit"), "the line does not fit");
}

}  // namespace
}  // namespace test

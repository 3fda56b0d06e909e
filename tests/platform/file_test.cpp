// Files: opening, reading, writing, positions and sizes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/platform/file_support.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using test::File;
using test::InChild;
using test::TempDir;

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

std::string ContentOf(fs::path const& path) {
  auto const bytes = test::ReadAll(path);
  return {bytes.begin(), bytes.end()};
}

void Store(fs::path const& path, std::string const& text) {
  test::WriteAll(path, {text.begin(), text.end()});
}

// The error of an open that fails.
DWORD OpenError(fs::path const& path, DWORD access = GENERIC_READ,
                DWORD disposition = OPEN_EXISTING) {
  SetLastError(0);
  EXPECT_FALSE(File(path, access, disposition).IsOpen());
  return GetLastError();
}

DWORD OpenErrorOfName(WCHAR const* name) {
  SetLastError(0);
  EXPECT_EQ(CreateFileW(name, GENERIC_READ, 1, nullptr, OPEN_EXISTING, 0, nullptr),
            INVALID_HANDLE_VALUE);
  return GetLastError();
}

TEST(CreateFile, MissingFileIsError2) {
  TempDir const dir;
  EXPECT_EQ(OpenError(dir / "none"), 2u);
  EXPECT_EQ(OpenError(dir / "none", kReadWrite), 2u);
  EXPECT_EQ(OpenError(dir / "none", GENERIC_WRITE, TRUNCATE_EXISTING), 2u);
  EXPECT_EQ(OpenError("no such file in the directory of the test"), 2u);
}

TEST(CreateFile, MissingDirectoryIsError3) {
  TempDir const dir;
  Store(dir / "file", "");
  EXPECT_EQ(OpenError(dir / "none" / "file"), 3u);
  EXPECT_EQ(OpenError(dir / "none" / "file", GENERIC_WRITE, CREATE_ALWAYS), 3u);
  EXPECT_EQ(OpenError(dir / "file" / "file"), 3u);
}

TEST(CreateFile, DirectoryIsError5) {
  TempDir const dir;
  EXPECT_EQ(OpenError(dir.path()), 5u);
  EXPECT_EQ(OpenError(dir.path(), GENERIC_WRITE), 5u);
  EXPECT_EQ(OpenError(dir.path(), GENERIC_WRITE, CREATE_ALWAYS), 5u);
}

TEST(CreateFile, RefusedAccessIsError5) {
  TempDir const dir;
  Store(dir / "file", "text");
  fs::permissions(dir / "file", fs::perms::none);
  fs::permissions(dir.path(), fs::perms::all);
  // Root may open everything, so the child is nobody in particular.
  int const error = InChild([&] {
    if (geteuid() == 0 && seteuid(65'534) != 0) return 255;
    return static_cast<int>(OpenError(dir / "file"));
  });
  EXPECT_EQ(error, 5);
}

TEST(CreateFile, RunningProgramIsInUse) {
  EXPECT_EQ(OpenError(fs::read_symlink("/proc/self/exe"), GENERIC_WRITE), 32u);
}

TEST(CreateFile, NamesThatNoFileCanHave) {
  EXPECT_EQ(OpenErrorOfName(nullptr), 3u);
  EXPECT_EQ(OpenErrorOfName(u""), 3u);
  EXPECT_EQ(OpenErrorOfName(u"a\xD800z"), 123u);
  EXPECT_EQ(OpenErrorOfName(u"\xDC00"), 123u);
  EXPECT_EQ(OpenError(std::string(300, 'x')), 206u);
}

TEST(CreateFile, RefusedArgumentsAreError87) {
  TempDir const dir;
  Store(dir / "file", "text");
  EXPECT_EQ(OpenError(dir / "file", 0), 87u);
  EXPECT_EQ(OpenError(dir / "file", kReadWrite, 0), 87u);
  EXPECT_EQ(OpenError(dir / "file", kReadWrite, 6), 87u);
  EXPECT_EQ(OpenError(dir / "file", GENERIC_READ, CREATE_ALWAYS), 87u);
  EXPECT_EQ(OpenError(dir / "file", GENERIC_READ, TRUNCATE_EXISTING), 87u);
  auto const name = (dir / "file").u16string();
  int something = 0;
  EXPECT_EQ(CreateFileW(name.c_str(), GENERIC_READ, 1, &something, OPEN_EXISTING, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(CreateFileW(name.c_str(), GENERIC_READ, 1, nullptr, OPEN_EXISTING, 0, &something),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(ContentOf(dir / "file"), "text");
}

TEST(CreateFile, TooManyOpenFilesIsError4) {
  int const error = InChild([] {
    rlimit const limit{3, 3};
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0) return 255;
    return static_cast<int>(OpenErrorOfName(u"/dev/null"));
  });
  EXPECT_EQ(error, 4);
}

TEST(CreateFile, CreateNewMakesAFileOnce) {
  TempDir const dir;
  EXPECT_TRUE(File(dir / "file", GENERIC_WRITE, CREATE_NEW).Write("text"));
  EXPECT_EQ(OpenError(dir / "file", GENERIC_WRITE, CREATE_NEW), 80u);
  EXPECT_EQ(ContentOf(dir / "file"), "text");
}

TEST(CreateFile, CreateAlwaysMakesOrEmpties) {
  TempDir const dir;
  for (std::string const text : {"longer text", "text"}) {
    EXPECT_TRUE(File(dir / "file", GENERIC_WRITE, CREATE_ALWAYS).Write(text));
    EXPECT_EQ(ContentOf(dir / "file"), text);
  }
}

TEST(CreateFile, OpenAlwaysMakesOrKeeps) {
  TempDir const dir;
  EXPECT_TRUE(File(dir / "file", GENERIC_WRITE, OPEN_ALWAYS).Write("longer"));
  EXPECT_TRUE(File(dir / "file", GENERIC_WRITE, OPEN_ALWAYS).Write("SHORT"));
  EXPECT_EQ(ContentOf(dir / "file"), "SHORTr");
}

TEST(CreateFile, OpenExistingKeepsAndTruncateExistingEmpties) {
  TempDir const dir;
  Store(dir / "file", "text");
  EXPECT_TRUE(File(dir / "file", kReadWrite, OPEN_EXISTING).IsOpen());
  EXPECT_EQ(ContentOf(dir / "file"), "text");
  EXPECT_TRUE(File(dir / "file", GENERIC_WRITE, TRUNCATE_EXISTING).IsOpen());
  EXPECT_EQ(ContentOf(dir / "file"), "");
}

TEST(CreateFile, NameIsUtf8OnDisk) {
  TempDir const dir;
  auto const name = dir.path().u16string() + u"/\xDC\x20AC\xD83D\xDE00.pdf";
  File file(CreateFileW(name.c_str(), GENERIC_WRITE, 1, nullptr, CREATE_NEW, 0, nullptr));
  ASSERT_TRUE(file.IsOpen());
  EXPECT_EQ(
      access((dir.path().string() + "/\xC3\x9C\xE2\x82\xAC\xF0\x9F\x98\x80.pdf").c_str(), F_OK), 0);
}

TEST(CreateFile, SequentialScanChangesNothing) {
  TempDir const dir;
  File file(dir / "file", kReadWrite, CREATE_ALWAYS,
            FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN);
  EXPECT_TRUE(file.Write("text"));
  EXPECT_EQ(SetFilePointer(file, 1, nullptr, FILE_BEGIN), 1u);
  EXPECT_EQ(file.Read(10), "ext");
}

TEST(CreateFile, TemporaryFileBelongsToItsOwner) {
  TempDir const dir;
  mode_t const mask = umask(0);
  File const temporary(dir / "temporary", GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY);
  File const normal(dir / "normal", GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
  umask(mask);
  EXPECT_EQ(fs::status(dir / "temporary").permissions(), fs::perms{0600});
  EXPECT_EQ(fs::status(dir / "normal").permissions(), fs::perms{0666});
}

TEST(CreateFile, ProgramsThatAreStartedDoNotInherit) {
  TempDir const dir;
  File const file(dir / "file", GENERIC_WRITE, CREATE_ALWAYS);
  int found = 0;
  for (auto const& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::read_symlink(entry, gone) != fs::canonical(dir / "file")) continue;
    ++found;
    EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
  }
  EXPECT_EQ(found, 1);
}

TEST(ReadFile, EndOfFileIsSuccessWithCount0) {
  TempDir const dir;
  Store(dir / "file", "text");
  File file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(file.Read(3), "tex");
  EXPECT_EQ(file.Read(3), "t");
  SetLastError(77);
  EXPECT_EQ(file.Read(3), "");
  EXPECT_EQ(GetLastError(), 77u);
  SetFilePointer(file, 100, nullptr, FILE_BEGIN);
  EXPECT_EQ(file.Read(3), "");
}

TEST(ReadFileAt, LeavesThePositionWhereItIs) {
  TempDir const dir;
  Store(dir / "file", "0123456789");
  File file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  SetFilePointer(file, 1, nullptr, FILE_BEGIN);
  char buffer[5] = "????";
  DWORD count = 0;
  EXPECT_TRUE(ReadFileAt(file, 4, buffer, 3, &count));
  EXPECT_EQ(count, 3u);
  EXPECT_STREQ(buffer, "456?");
  EXPECT_TRUE(ReadFileAt(file, 8, buffer, 4, nullptr));
  EXPECT_STREQ(buffer, "896?");
  EXPECT_EQ(file.Read(2), "12");
}

TEST(ReadFileAt, BehindTheEndIsSuccessWithCount0) {
  TempDir const dir;
  Store(dir / "file", "text");
  File const file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  char byte = 0;
  for (uint64_t const offset : {uint64_t{4}, uint64_t{1} << 40}) {
    DWORD count = 7;
    EXPECT_TRUE(ReadFileAt(file, offset, &byte, 1, &count));
    EXPECT_EQ(count, 0u);
  }
}

TEST(ReadFileAt, RefusesWhatItCannotRead) {
  TempDir const dir;
  File const file(dir / "file", GENERIC_WRITE, CREATE_ALWAYS);
  char byte = 0;
  DWORD count = 7;
  EXPECT_FALSE(ReadFileAt(file, 0, &byte, 1, &count));
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(count, 0u);
  EXPECT_FALSE(ReadFileAt(file, uint64_t{1} << 63, &byte, 1, &count));
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_FALSE(ReadFileAt(INVALID_HANDLE_VALUE, 0, &byte, 1, &count));
  EXPECT_EQ(GetLastError(), 6u);
}

TEST(ReadFile, CountMayBeNull) {
  TempDir const dir;
  Store(dir / "file", "text");
  File const file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  char buffer[5] = "????";
  EXPECT_NE(ReadFile(file, buffer, 4, nullptr, nullptr), 0);
  EXPECT_STREQ(buffer, "text");
}

TEST(ReadFile, FailureClearsTheCount) {
  TempDir const dir;
  File const file(dir / "file", GENERIC_WRITE, CREATE_ALWAYS);
  char buffer[4];
  DWORD count = 9;
  EXPECT_EQ(ReadFile(file, buffer, 4, &count, nullptr), 0);
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(count, 0u);
  File const readable(dir / "other", kReadWrite, CREATE_ALWAYS);
  EXPECT_EQ(ReadFile(readable, buffer, 4, &count, buffer), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(ReadFile(readable, nullptr, 0, &count, nullptr), 1);
}

TEST(WriteFile, FailureClearsTheCount) {
  TempDir const dir;
  Store(dir / "file", "text");
  File const file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  DWORD count = 9;
  EXPECT_EQ(WriteFile(file, "new", 3, &count, nullptr), 0);
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(count, 0u);
  File const writable(dir / "other", GENERIC_WRITE, CREATE_ALWAYS);
  EXPECT_EQ(WriteFile(writable, "new", 3, &count, &count), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(ContentOf(dir / "file"), "text");
}

TEST(WriteFile, ZeroBytesAreASuccess) {
  TempDir const dir;
  File const file(dir / "file", GENERIC_WRITE, CREATE_ALWAYS);
  DWORD count = 9;
  EXPECT_NE(WriteFile(file, nullptr, 0, &count, nullptr), 0);
  EXPECT_EQ(count, 0u);
  EXPECT_NE(WriteFile(file, "ab", 2, nullptr, nullptr), 0);
  EXPECT_EQ(ContentOf(dir / "file"), "ab");
}

TEST(WriteFile, FullDiskIsError112) {
  File file("/dev/full", GENERIC_WRITE, OPEN_EXISTING);
  ASSERT_TRUE(file.IsOpen());
  EXPECT_FALSE(file.Write("text"));
  EXPECT_EQ(GetLastError(), 112u);
}

// The first write ends short at the limit, and the rest fails.
int WritePastALimit(fs::path const& path) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit const limit{4096, 4096};
  if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
  File const file(path, GENERIC_WRITE, CREATE_ALWAYS);
  std::string const text(10'000, 'x');
  DWORD count = 0;
  if (WriteFile(file, text.data(), 10'000, &count, nullptr) != 0) return 2;
  if (GetLastError() != 223) return 3;
  return count == 4096 ? 0 : 4;
}

TEST(WriteFile, SizeLimitIsError223WithTheCountWritten) {
  TempDir const dir;
  EXPECT_EQ(InChild([&] { return WritePastALimit(dir / "file"); }), 0);
  EXPECT_EQ(fs::file_size(dir / "file"), 4096u);
}

TEST(SetFilePointer, ResultIsTheNewPosition) {
  TempDir const dir;
  Store(dir / "file", "0123456789");
  File file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(SetFilePointer(file, 4, nullptr, FILE_BEGIN), 4u);
  EXPECT_EQ(file.Read(1), "4");
  EXPECT_EQ(SetFilePointer(file, 2, nullptr, FILE_CURRENT), 7u);
  EXPECT_EQ(SetFilePointer(file, -3, nullptr, FILE_CURRENT), 4u);
  EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_END), 9u);
  EXPECT_EQ(file.Read(5), "9");
  EXPECT_EQ(SetFilePointer(file, 5, nullptr, FILE_END), 15u);
}

TEST(SetFilePointer, FailureLeavesThePosition) {
  TempDir const dir;
  Store(dir / "file", "0123456789");
  File file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  SetFilePointer(file, 3, nullptr, FILE_BEGIN);
  EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 131u);
  EXPECT_EQ(SetFilePointer(file, -4, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 131u);
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(file.Read(1), "3");
}

TEST(SetFilePointer, HighWordsJoinLowWords) {
  TempDir const dir;
  File file(dir / "file", kReadWrite, CREATE_ALWAYS);
  LONG high = 1;
  // The low word is no number of its own here: its highest bit is not a sign.
  EXPECT_EQ(SetFilePointer(file, static_cast<LONG>(0x80000005), &high, FILE_BEGIN), 0x80000005u);
  EXPECT_EQ(high, 1);
  EXPECT_TRUE(file.Write("end"));
  high = 0;
  EXPECT_EQ(SetFilePointer(file, 0, &high, FILE_CURRENT), 0x80000008u);
  EXPECT_EQ(high, 1);
  high = -1;
  EXPECT_EQ(SetFilePointer(file, -8, &high, FILE_END), 0x80000000u);
  EXPECT_EQ(high, 1);
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_END), 0x80000008u);
}

TEST(GetFileSize, GivesLowAndHighWordOfASparseFile) {
  TempDir const dir;
  File file(dir / "file", kReadWrite, CREATE_ALWAYS);
  LONG high = 2;
  SetFilePointer(file, 0x10, &high, FILE_BEGIN);
  EXPECT_TRUE(file.Write("end"));
  DWORD high_size = 0;
  EXPECT_EQ(GetFileSize(file, &high_size), 0x13u);
  EXPECT_EQ(high_size, 2u);
  EXPECT_EQ(GetFileSize(file, nullptr), 0x13u);
  SetFilePointer(file, 0x10, &high, FILE_BEGIN);
  EXPECT_EQ(file.Read(10), "end");
}

TEST(GetFileSize, LowWordThatReadsLikeAFailureSetsError0) {
  TempDir const dir;
  Store(dir / "file", "");
  ASSERT_EQ(truncate((dir / "file").c_str(), 0xFFFFFFFF), 0);
  File const file(dir / "file", GENERIC_READ, OPEN_EXISTING);
  SetLastError(77);
  EXPECT_EQ(GetFileSize(file, nullptr), INVALID_FILE_SIZE);
  EXPECT_EQ(GetLastError(), 0u);
  SetLastError(77);
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_END), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 0u);
}

// Every operation on `handle` fails with error 6.
void ExpectRefused(HANDLE handle) {
  auto const error = [] {
    DWORD const number = GetLastError();
    SetLastError(0);
    return number;
  };
  char buffer[4];
  DWORD count = 9;
  SetLastError(0);
  EXPECT_EQ(ReadFile(handle, buffer, 4, &count, nullptr), 0);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(WriteFile(handle, buffer, 4, &count, nullptr), 0);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(SetFilePointer(handle, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(GetFileSize(handle, nullptr), INVALID_FILE_SIZE);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(FlushFileBuffers(handle), 0);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(CloseHandle(handle), 0);
  EXPECT_EQ(error(), 6u);
  EXPECT_EQ(count, 0u);
}

TEST(FileHandle, ForeignValuesAreRefused) {
  int local = 0;
  for (uint64_t const value :
       {uint64_t{0}, ~uint64_t{0}, uint64_t{1}, uint64_t{3}, uint64_t{0xD25} << 52 | 1}) {
    ExpectRefused(reinterpret_cast<HANDLE>(value));
  }
  ExpectRefused(&local);
}

TEST(FileHandle, BlockHandleIsRefused) {
  HGLOBAL const block = GlobalAlloc(GHND, 10);
  ExpectRefused(block);
  EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(FileHandle, ClosedHandleIsRefusedWhileNewFilesAreOpen) {
  TempDir const dir;
  File file(dir / "file", GENERIC_WRITE, CREATE_ALWAYS);
  HANDLE const stale = file;
  EXPECT_TRUE(file.Close());
  ExpectRefused(stale);
  File const other(dir / "other", kReadWrite, CREATE_ALWAYS);
  EXPECT_NE(static_cast<HANDLE>(other), stale);
  ExpectRefused(stale);
  EXPECT_EQ(GetFileSize(other, nullptr), 0u);
}

TEST(SetEndOfFile, FileEndsAtItsPosition) {
  TempDir const dir;
  Store(dir / "file", "0123456789");
  File const file(dir / "file", kReadWrite, OPEN_EXISTING);
  SetFilePointer(file, 4, nullptr, FILE_BEGIN);
  EXPECT_NE(SetEndOfFile(file), 0);
  EXPECT_EQ(ContentOf(dir / "file"), "0123");
  SetFilePointer(file, 6, nullptr, FILE_BEGIN);
  EXPECT_NE(SetEndOfFile(file), 0);
  EXPECT_EQ(ContentOf(dir / "file"), std::string("0123\0\0", 6));
}

TEST(SetEndOfFile, NeedsWriteAccess) {
  TempDir const dir;
  Store(dir / "file", "0123456789");
  EXPECT_EQ(SetEndOfFile(File(dir / "file", GENERIC_READ, OPEN_EXISTING)), 0);
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(ContentOf(dir / "file"), "0123456789");
}

TEST(FlushFileBuffers, NeedsWriteAccess) {
  TempDir const dir;
  EXPECT_NE(FlushFileBuffers(File(dir / "file", GENERIC_WRITE, CREATE_ALWAYS)), 0);
  EXPECT_EQ(FlushFileBuffers(File(dir / "file", GENERIC_READ, OPEN_EXISTING)), 0);
  EXPECT_EQ(GetLastError(), 5u);
}

TEST(DeleteFile, RemovesAFileOnce) {
  TempDir const dir;
  Store(dir / "file", "text");
  auto const name = (dir / "file").u16string();
  EXPECT_NE(DeleteFileW(name.c_str()), 0);
  EXPECT_FALSE(fs::exists(dir / "file"));
  EXPECT_EQ(DeleteFileW(name.c_str()), 0);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(DeleteFileW((name + u"/file").c_str()), 0);
  EXPECT_EQ(GetLastError(), 3u);
}

TEST(DeleteFile, DirectoryIsError5) {
  TempDir const dir;
  EXPECT_EQ(DeleteFileW(dir.path().u16string().c_str()), 0);
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_TRUE(fs::exists(dir.path()));
  EXPECT_EQ(DeleteFileW(nullptr), 0);
  EXPECT_EQ(GetLastError(), 3u);
}

TEST(GetFileAttributes, TellsFilesFromDirectories) {
  TempDir const dir;
  Store(dir / "file", "text");
  EXPECT_EQ(GetFileAttributesW((dir / "file").u16string().c_str()), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(GetFileAttributesW(dir.path().u16string().c_str()), FILE_ATTRIBUTE_DIRECTORY);
}

TEST(GetFileAttributes, MissingNamesAreErrors2And3) {
  TempDir const dir;
  EXPECT_EQ(GetFileAttributesW((dir / "none").u16string().c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(GetFileAttributesW((dir / "none" / "file").u16string().c_str()),
            INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), 3u);
}

}  // namespace

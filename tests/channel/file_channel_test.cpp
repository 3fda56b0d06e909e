// Channels over files and memory, where they agree and where callers rely on a difference.
#include <gtest/gtest.h>
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>

#include <cstdlib>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace sorrelin {
namespace {

constexpr DWORD kUntouched = 4711;

FileChannel* OpenForReading(std::filesystem::path const& path) {
  return ChannelOpenFile(path.string<WCHAR>().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                         OPEN_EXISTING, 0, nullptr);
}

FileChannel* OpenForWriting(std::filesystem::path const& path) {
  return ChannelOpenFile(path.string<WCHAR>().c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                         CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
}

std::string Content(FileChannel const& channel) {
  return {reinterpret_cast<char const*>(channel.buffer.pData),
          static_cast<size_t>(channel.buffer.nSize)};
}

struct Memory {
  explicit Memory(DWORD capacity) : channel(ChannelOpenMemory(capacity)) {}
  Memory(std::string const& text, bool read_only)
      : channel(ChannelAttachMemory(text.data(), static_cast<DWORD>(text.size()), read_only)) {}
  ~Memory() { ChannelClose(channel); }
  FileChannel* channel;
};

BOOL Write(FileChannel* channel, std::string const& text) {
  return ChannelWrite(channel, text.data(), static_cast<DWORD>(text.size()), nullptr, nullptr);
}

TEST(MemoryBuffer, FreshBufferIsEmptyAndReadOnly) {
  MemoryBuffer buffer;
  EXPECT_EQ(buffer.pData, nullptr);
  EXPECT_EQ(buffer.nCapacity + buffer.nSize + buffer.nPos, 0u);
  EXPECT_EQ(buffer.bReadOnly, 1);
}

TEST(MemoryChannel, WriteToReadOnlyFailsWith6009AndKeepsThePosition) {
  std::string const text = "abc";
  Memory memory(text, true);
  ChannelSeek(memory.channel, 1, nullptr, FILE_BEGIN);
  EXPECT_EQ(Write(memory.channel, "x"), 0);
  EXPECT_EQ(GetLastError(), ERROR_FILE_READ_ONLY);
  EXPECT_EQ(memory.channel->buffer.nPos, 1u);
  EXPECT_EQ(text, "abc");
}

TEST(MemoryChannel, ReadAtTheExactEndFailsWithoutAnError) {
  Memory memory("abc", true);
  char byte;
  ChannelSeek(memory.channel, 3, nullptr, FILE_BEGIN);
  SetLastError(kUntouched);
  DWORD count = 99;
  EXPECT_EQ(ChannelRead(memory.channel, &byte, 1, &count, nullptr), 0);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(GetLastError(), kUntouched);
}

TEST(MemoryChannel, SeekReturnsTheOldPositionAndReadingAtTheEndFails) {
  Memory memory("abc", true);
  ChannelSeek(memory.channel, 2, nullptr, FILE_BEGIN);
  EXPECT_EQ(ChannelSeek(memory.channel, 0, nullptr, FILE_END), 2u);
  SetLastError(kUntouched);
  char byte;
  DWORD count = 99;
  EXPECT_EQ(ChannelRead(memory.channel, &byte, 1, &count, nullptr), 0);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(GetLastError(), kUntouched);
}

TEST(MemoryChannel, ReadPastTheEndSets38) {
  Memory memory("abc", true);
  ChannelSeek(memory.channel, 1, nullptr, FILE_END);
  char byte;
  EXPECT_EQ(ChannelRead(memory.channel, &byte, 1, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_HANDLE_EOF);
}

TEST(MemoryChannel, ReadGivesWhatIsLeft) {
  Memory memory("abc", true);
  char bytes[8] = {};
  DWORD count = 99;
  EXPECT_NE(ChannelRead(memory.channel, bytes, 8, &count, nullptr), 0);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(std::string(bytes), "abc");
  EXPECT_EQ(memory.channel->buffer.nPos, 3u);
}

TEST(MemoryChannel, ReadPastTheEndCountsNothing) {
  Memory memory("abc", true);
  ChannelSeek(memory.channel, 1, nullptr, FILE_END);
  SetLastError(kUntouched);
  char byte;
  DWORD count = 99;
  EXPECT_EQ(ChannelRead(memory.channel, &byte, 1, &count, nullptr), 0);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(GetLastError(), ERROR_HANDLE_EOF);
}

TEST(MemoryChannel, WritePastTheEndCoversTheGap) {
  Memory memory("abc", false);
  ChannelSeek(memory.channel, 2, nullptr, FILE_END);
  EXPECT_NE(Write(memory.channel, "xy"), 0);
  EXPECT_EQ(memory.channel->buffer.nSize, 7u);
  EXPECT_EQ(Content(*memory.channel).substr(0, 3), "abc");
  EXPECT_EQ(Content(*memory.channel).substr(5), "xy");
}

TEST(MemoryChannel, WriteAfterABackwardSeekOverwritesInPlace) {
  Memory memory("abcdef", false);
  ChannelSeek(memory.channel, 1, nullptr, FILE_BEGIN);
  EXPECT_NE(Write(memory.channel, "XY"), 0);
  EXPECT_EQ(Content(*memory.channel), "aXYdef");
}

TEST(MemoryChannel, OpensEmptyOverAZeroFilledBlock) {
  Memory memory(8);
  EXPECT_EQ(memory.channel->buffer.nSize, 0u);
  EXPECT_EQ(memory.channel->buffer.nCapacity, 8u);
  EXPECT_EQ(memory.channel->buffer.bReadOnly, 0);
  BYTE const* const block = memory.channel->buffer.pData;
  EXPECT_EQ(std::string(block, block + 8), std::string(8, '\0'));
}

TEST(MemoryChannel, WriteGrowsToTheExactFit) {
  Memory memory(4);
  Write(memory.channel, "abc");
  EXPECT_EQ(memory.channel->buffer.nCapacity, 4u);
  Write(memory.channel, "defg");
  EXPECT_EQ(memory.channel->buffer.nCapacity, 7u);
  EXPECT_EQ(Content(*memory.channel), "abcdefg");
}

TEST(MemoryChannel, WriteOfNoBytesReportsFailure) {
  Memory memory(4);
  DWORD count = 99;
  EXPECT_EQ(ChannelWrite(memory.channel, "", 0, &count, nullptr), 0);
  EXPECT_EQ(count, 0u);
}

TEST(MemoryChannel, WriteBehindAnUnreachablePositionSets8) {
  Memory memory(4);
  ChannelSeek(memory.channel, -1, nullptr, FILE_BEGIN);
  EXPECT_EQ(Write(memory.channel, "x"), 0);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(memory.channel->buffer.nSize, 0u);
}

TEST(MemoryChannel, SeekTakesOriginsAndLeavesOthersAlone) {
  Memory memory("abcdef", true);
  struct Row {
    LONG offset;
    DWORD origin;
    uint64_t position;
  };
  for (Row const& row : {Row{2, FILE_BEGIN, 2}, Row{3, FILE_CURRENT, 5}, Row{-1, FILE_END, 5},
                         Row{4, 7, 5}, Row{-6, FILE_CURRENT, UINT64_MAX}}) {
    ChannelSeek(memory.channel, row.offset, nullptr, row.origin);
    EXPECT_EQ(memory.channel->buffer.nPos, row.position) << row.offset;
  }
}

TEST(MemoryChannel, SeekWithAHighWordJoinsBothAndStoresTheOldOne) {
  Memory memory("abc", true);
  LONG high = 1;
  EXPECT_EQ(ChannelSeek(memory.channel, 5, &high, FILE_BEGIN), 0u);
  EXPECT_EQ(high, 0);
  EXPECT_EQ(memory.channel->buffer.nPos, 0x100000005u);
  high = 0;
  EXPECT_EQ(ChannelSeek(memory.channel, 0, &high, FILE_BEGIN), 5u);
  EXPECT_EQ(high, 1);
}

TEST(MemoryChannel, AttachedCopyIsIndependentOfTheCallersBlock) {
  std::string text = "abc";
  Memory memory(text, false);
  Write(memory.channel, "X");
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(Content(*memory.channel), "Xbc");
}

TEST(MemoryChannel, AttachOfNoBytesHasEmptyContent) {
  Memory memory("", false);
  ASSERT_NE(memory.channel, InvalidChannel());
  DWORD high = 99;
  EXPECT_EQ(ChannelGetSize(memory.channel, &high), 0u);
  EXPECT_EQ(high, 0u);
}

TEST(MemoryChannel, AttachOfNullFailsWith1168) {
  EXPECT_EQ(ChannelAttachMemory(nullptr, 3, true), InvalidChannel());
  EXPECT_EQ(GetLastError(), ERROR_NOT_FOUND);
}

TEST(MemoryChannel, CloseTakeHandsAnOwnedBlockOver) {
  FileChannel* const channel = ChannelOpenMemory(0);
  Write(channel, "abc");
  int64_t data = 0;
  DWORD size = 0;
  EXPECT_EQ(ChannelCloseTake(channel, &data, &size), 1);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(data), size), "abc");
  std::free(reinterpret_cast<void*>(data));
}

TEST(MemoryChannel, CloseTakeOfReadOnlyGivesNothingAndLeavesTheBlock) {
  std::string const text = "abc";
  FileChannel* const channel = ChannelAttachMemory(text.data(), 3, true);
  int64_t data = 99;
  DWORD size = 99;
  EXPECT_EQ(ChannelCloseTake(channel, &data, &size), 1);
  EXPECT_EQ(data, 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(text, "abc");
}

TEST(MemoryChannel, CloseTakeWithoutATakerDropsTheBlock) {
  FileChannel* const channel = ChannelOpenMemory(0);
  Write(channel, "abc");
  BYTE* const block = channel->buffer.pData;
  DWORD size = 99;
  EXPECT_EQ(ChannelCloseTake(channel, nullptr, &size), 1);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(block[0], 'a');
  std::free(block);
}

TEST(Channel, NullFailsWith6Everywhere) {
  char byte;
  struct Row {
    char const* name;
    DWORD result;
    DWORD expected;
  };
  SetLastError(0);
  EXPECT_EQ(ChannelClose(nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  for (Row const& row :
       {Row{"read", static_cast<DWORD>(ChannelRead(nullptr, &byte, 1, nullptr, nullptr)), 0},
        Row{"write", static_cast<DWORD>(ChannelWrite(nullptr, "x", 1, nullptr, nullptr)), 0},
        Row{"seek", ChannelSeek(nullptr, 0, nullptr, 0), INVALID_SET_FILE_POINTER},
        Row{"size", ChannelGetSize(nullptr, nullptr), INVALID_FILE_SIZE},
        Row{"take", static_cast<DWORD>(ChannelCloseTake(nullptr, nullptr, nullptr)), 0}}) {
    EXPECT_EQ(row.result, row.expected) << row.name;
  }
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(FileChannel, WritesReadsSeeksAndTellsItsSizeAsAFile) {
  test::TempDir const dir;
  FileChannel* const out = OpenForWriting(dir / "a");
  EXPECT_NE(Write(out, "abcdef"), 0);
  EXPECT_EQ(ChannelSeek(out, 0, nullptr, FILE_END), 6u);
  EXPECT_EQ(ChannelGetSize(out, nullptr), 6u);
  EXPECT_NE(ChannelClose(out), 0);
  FileChannel* const in = OpenForReading(dir / "a");
  char bytes[8] = {};
  DWORD count = 0;
  EXPECT_EQ(ChannelSeek(in, 4, nullptr, FILE_BEGIN), 4u);
  EXPECT_NE(ChannelRead(in, bytes, 8, &count, nullptr), 0);
  EXPECT_EQ(std::string(bytes, count), "ef");
  EXPECT_NE(ChannelRead(in, bytes, 8, &count, nullptr), 0);
  EXPECT_EQ(count, 0u);
  ChannelClose(in);
}

TEST(FileChannel, ClosedTwiceFailsTheSecondTime) {
  test::TempDir const dir;
  FileChannel* const channel = OpenForWriting(dir / "a");
  EXPECT_NE(ChannelClose(channel), 0);
  EXPECT_EQ(channel->hFile, nullptr);
  EXPECT_EQ(ChannelClose(channel), 0);
}

TEST(FileChannel, CloseTakeStoresNothing) {
  test::TempDir const dir;
  FileChannel* const channel = OpenForWriting(dir / "a");
  int64_t data = 99;
  DWORD size = 99;
  EXPECT_NE(ChannelCloseTake(channel, &data, &size), 0);
  EXPECT_EQ(data, 0);
  EXPECT_EQ(size, 0u);
}

TEST(FileChannel, FailedOpenLeavesTheSystemsError) {
  test::TempDir const dir;
  EXPECT_EQ(OpenForReading(dir / "missing"), InvalidChannel());
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST(FileChannel, ReadAtAnOffsetLeavesThePosition) {
  test::TempDir const directory;
  std::string const name = (directory / "file").string();
  test::WriteAll(name, {'t', 'e', 'x', 't'});
  FileChannel* const channel = OpenForReading(name);
  ChannelSeek(channel, 1, nullptr, FILE_BEGIN);
  char buffer[3] = "??";
  EXPECT_EQ(ChannelReadFileAt(channel, 2, buffer, 2), DWORD{2});
  EXPECT_STREQ(buffer, "xt");
  EXPECT_EQ(ChannelReadFileAt(channel, 4, buffer, 2), DWORD{0});
  EXPECT_EQ(ChannelSeek(channel, 0, nullptr, FILE_CURRENT), 1u);
  ChannelClose(channel);
}

TEST(FileChannel, ReadAtTwoGigabytesIsOutOfReach) {
  test::TempDir const directory;
  std::string const name = (directory / "file").string();
  test::WriteAll(name, {'t'});
  FileChannel* const channel = OpenForReading(name);
  char byte = 0;
  EXPECT_EQ(ChannelReadFileAt(channel, 0x7FFFFFFF, &byte, 1), DWORD{0});
  EXPECT_EQ(ChannelReadFileAt(channel, 0x80000000, &byte, 1), std::nullopt);
  EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
  ChannelClose(channel);
}

// Somebody's pipe under a document's name.
TEST(FileChannel, ReadAtAnOffsetOfAPipeIsOutOfReach) {
  test::Pipe const pipe;
  FileChannel* const channel = OpenForReading(pipe.path());
  ASSERT_NE(channel, InvalidChannel());
  char byte = 0;
  EXPECT_EQ(ChannelReadFileAt(channel, 0, &byte, 1), std::nullopt);
  ChannelClose(channel);
}

}  // namespace
}  // namespace sorrelin

// Looks at a channel's bytes by offset.
#include <gtest/gtest.h>
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/channel/read_window.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/temp_dir.h>

#include <string>

namespace {

using sorrelin::FileChannel;
using sorrelin::ReadWindow;

std::vector<BYTE> Content(size_t bytes) {
  std::vector<BYTE> content(bytes);
  for (size_t i = 0; i < bytes; ++i) content[i] = static_cast<BYTE>(i * 7 + i / 251);
  return content;
}

// The same content as a file or as a block of memory.
class ReadWindowTest : public testing::TestWithParam<bool> {
 protected:
  ReadWindowTest() : content_(Content(200000)) {
    if (GetParam()) {
      channel_ = sorrelin::ChannelAttachMemory(content_.data(), Size(), true);
    } else {
      std::string const name = (directory_ / "content").string();
      test::WriteAll(name, content_);
      channel_ = sorrelin::ChannelOpenFile(sorrelin::ToWide(name.c_str()).c_str(), GENERIC_READ,
                                           FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    }
    sorrelin::ChannelSeek(channel_, 77, nullptr, FILE_BEGIN);
  }
  ~ReadWindowTest() override {
    EXPECT_EQ(sorrelin::ChannelSeek(channel_, 0, nullptr, FILE_CURRENT), 77u);
    sorrelin::ChannelClose(channel_);
    delete channel_;
  }
  DWORD Size() const { return static_cast<DWORD>(content_.size()); }
  void ExpectLook(ReadWindow& window, DWORD offset, DWORD bytes) {
    auto const seen = window.Look(channel_, offset, bytes);
    ASSERT_TRUE(seen.has_value());
    DWORD const there = offset < Size() ? std::min(bytes, Size() - offset) : 0;
    ASSERT_EQ(seen->size(), there) << offset << " " << bytes;
    EXPECT_TRUE(std::equal(seen->begin(), seen->end(), content_.begin() + offset));
  }
  void ExpectRead(ReadWindow& window, DWORD offset, DWORD bytes) {
    std::vector<BYTE> out(bytes);
    DWORD const there = offset < Size() ? std::min(bytes, Size() - offset) : 0;
    ASSERT_EQ(window.Read(channel_, offset, out.data(), bytes), there);
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + there, content_.begin() + offset));
  }

  test::TempDir directory_;
  std::vector<BYTE> content_;
  FileChannel* channel_;
};

TEST_P(ReadWindowTest, LooksForwardsAndBackwards) {
  ReadWindow window;
  for (DWORD offset = 0; offset < 20000; offset += 333) ExpectLook(window, offset, 100);
  for (DWORD offset = 20000; offset > 400; offset -= 333) ExpectLook(window, offset, 500);
}

TEST_P(ReadWindowTest, LooksOfEverySize) {
  ReadWindow window;
  for (DWORD bytes = 1; bytes <= 131072; bytes *= 2) ExpectLook(window, 1000, bytes);
  for (DWORD bytes = 131072; bytes >= 1; bytes /= 2) ExpectLook(window, 50000, bytes);
}

TEST_P(ReadWindowTest, EndsWithTheContent) {
  ReadWindow window;
  for (DWORD back = 0; back <= 40; back += 5) ExpectLook(window, Size() - back, 20);
}

TEST_P(ReadWindowTest, ReadsWhatItDoesAndDoesNotHold) {
  ReadWindow window;
  for (DWORD const bytes : {10u, 1000u, 65535u, 65536u, 150000u}) {
    ExpectRead(window, 5, bytes);
    ExpectLook(window, 3, 10);
    ExpectRead(window, Size() - 1000, bytes);
  }
}

TEST_P(ReadWindowTest, LooksAgainAfterClear) {
  ReadWindow window;
  ExpectLook(window, 100, 10);
  window.Clear();
  ExpectLook(window, 105, 10);
}

INSTANTIATE_TEST_SUITE_P(Channels, ReadWindowTest, testing::Bool(), [](auto const& row) {
  return std::string(row.param ? "Memory" : "File");
});

TEST(ReadWindow, NothingWithoutAChannel) {
  ReadWindow window;
  BYTE byte = 0;
  EXPECT_FALSE(window.Look(nullptr, 0, 1).has_value());
  EXPECT_FALSE(window.Look(sorrelin::InvalidChannel(), 0, 1).has_value());
  EXPECT_FALSE(window.Read(nullptr, 0, &byte, 1).has_value());
}

TEST(ReadWindow, NothingWhereAFileCannotSeek) {
  test::TempDir directory;
  std::string const name = (directory / "content").string();
  test::WriteAll(name, {1, 2, 3});
  FileChannel* const channel =
      sorrelin::ChannelOpenFile(sorrelin::ToWide(name.c_str()).c_str(), GENERIC_READ,
                                FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ReadWindow window;
  EXPECT_FALSE(window.Look(channel, 0x80000000, 1).has_value());
  EXPECT_TRUE(window.Look(channel, 3, 1).has_value());
  sorrelin::ChannelClose(channel);
  delete channel;
}

TEST(ReadWindow, MemoryPastTheEndSetsTheSystemError) {
  BYTE const content[] = {1, 2, 3};
  FileChannel* const channel = sorrelin::ChannelAttachMemory(content, 3, true);
  ReadWindow window;
  SetLastError(0);
  window.Look(channel, 3, 1);
  EXPECT_EQ(GetLastError(), 0u);
  window.Look(channel, 4, 1);
  EXPECT_EQ(GetLastError(), 38u);
  sorrelin::ChannelClose(channel);
  delete channel;
}

}  // namespace

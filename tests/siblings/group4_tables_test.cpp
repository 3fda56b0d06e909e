// The code words of T.4 and T.6, and that both directions have the same.
#include <gtest/gtest.h>
#include <siblings/cadwick/group4_tables.h>

using namespace sorrelin::cadwick;

namespace {

// Entries of a table whose index begins with `code`, all of them.
template <typename Entry, size_t kEntries>
Entry OnlyEntry(std::array<Entry, kEntries> const& table, Code code) {
  size_t const span = kEntries >> code.length;
  size_t const first = static_cast<size_t>(code.bits) * span;
  for (size_t i = 0; i < span; ++i) EXPECT_EQ(table[first + i].Length(), code.length);
  return table[first];
}

template <size_t kEntries>
void ExpectRuns(std::array<RunEntry, kEntries> const& table, RunCodes const& codes) {
  for (uint32_t pixels = 0; pixels < 64; ++pixels) {
    EXPECT_EQ(OnlyEntry(table, codes.terminating[pixels]).Pixels(), pixels);
  }
  for (uint32_t pixels = 64; pixels <= 2560; pixels += 64) {
    EXPECT_EQ(OnlyEntry(table, codes.make_up[pixels / 64]).Pixels(), pixels);
  }
}

// Indices that begin with no code.
template <typename Entry, size_t kEntries>
size_t Unused(std::array<Entry, kEntries> const& table) {
  size_t unused = 0;
  for (Entry const& entry : table) unused += entry.Length() == 0;
  return unused;
}

}  // namespace

TEST(Group4Tables, WhiteRunsAreFoundByTheirCodes) { ExpectRuns(kWhiteRunTable, kRunCodes[0]); }
TEST(Group4Tables, BlackRunsAreFoundByTheirCodes) { ExpectRuns(kBlackRunTable, kRunCodes[1]); }

TEST(Group4Tables, ModesAreFoundByTheirCodes) {
  EXPECT_EQ(OnlyEntry(kModeTable, kPassCode).mode, Mode::kPass);
  EXPECT_EQ(OnlyEntry(kModeTable, kHorizontalCode).mode, Mode::kHorizontal);
  for (int distance = -3; distance <= 3; ++distance) {
    ModeEntry const entry =
        OnlyEntry(kModeTable, kVerticalCodes[static_cast<size_t>(distance + 3)]);
    EXPECT_EQ(entry.mode, Mode::kVertical);
    EXPECT_EQ(entry.distance, distance);
  }
}

// What is left over begins an extension (0000001) or an end mark (0000000): with eight zeros no
// run begins, and of the codes with seven zeros those of Table 3b are the only ones.
TEST(Group4Tables, OnlyExtensionsAndTheEndMarkAreLeftOver) {
  EXPECT_EQ(Unused(kModeTable), 2U);
  EXPECT_EQ(kModeTable[0].mode, Mode::kInvalid);
  EXPECT_EQ(kModeTable[1].mode, Mode::kInvalid);
}

TEST(Group4Tables, NoRunBeginsWithEightZeros) {
  for (size_t i = 0; i < kWhiteRunTable.size() >> 8; ++i) EXPECT_EQ(kWhiteRunTable[i].Length(), 0U);
  for (size_t i = 0; i < kBlackRunTable.size() >> 8; ++i) EXPECT_EQ(kBlackRunTable[i].Length(), 0U);
}

TEST(Group4Tables, CodesInARowKeepTheirOrder) {
  constexpr Code code = ParseCode("0001") + ParseCode("1") + ParseCode("011");
  EXPECT_EQ(code.bits, 0b00011011U);
  EXPECT_EQ(code.length, 8U);
  EXPECT_EQ((Code{} + code).bits, code.bits);
}

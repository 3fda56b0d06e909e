// The undoing of PNG rows, byte by byte.
#include <gtest/gtest.h>
#include <sorrelin/image/predictor.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

struct Undone {
  int result;
  Bytes data;
  bool operator==(Undone const&) const = default;
};
void PrintTo(Undone const& undone, std::ostream* out) {
  *out << undone.result << ": " << testing::PrintToString(undone.data);
}

// `columns` bytes a row, `colors` of them a pixel.
Undone Undo(Bytes data, DWORD columns, DWORD colors = 1, DWORD bits = 8) {
  int const result = sorrelin::DecodePngRows({columns, colors, bits}, data);
  return {result, data};
}

TEST(PngRows, ThreeRowsOfUpFillTheBufferFromItsStart) {
  Bytes const data{2, 1, 2, 3, 4, 2, 1, 1, 1, 1, 2, 0, 0, 0, 255};
  Bytes const rows{1, 2, 3, 4, 2, 3, 4, 5, 2, 3, 4, 4, 0, 0, 255};
  EXPECT_EQ(Undo(data, 4), (Undone{1, rows}));
}

struct PngRow {
  char const* name;
  Bytes data;
  DWORD columns;
  DWORD colors;
  Bytes rows;  // the undone rows only
};
class PngFilter : public testing::TestWithParam<PngRow> {};

TEST_P(PngFilter, IsUndone) {
  PngRow const& row = GetParam();
  Undone undone = Undo(row.data, row.columns, row.colors);
  EXPECT_EQ(undone.result, 1);
  undone.data.resize(row.rows.size());
  EXPECT_EQ(undone.data, row.rows);
}

// Rows of three or four bytes, the first of tag 0 where a row above is needed.
INSTANTIATE_TEST_SUITE_P(
    Rows, PngFilter,
    testing::Values(
        PngRow{"NoneFirst", {0, 7, 8, 9}, 3, 1, {7, 8, 9}},
        PngRow{"SubFirst", {1, 7, 8, 9}, 3, 1, {7, 15, 24}},
        PngRow{"SubTwoBytesAPixel", {1, 1, 2, 3, 4}, 2, 2, {1, 2, 4, 6}},
        PngRow{"SubWraps", {1, 200, 100, 0}, 3, 1, {200, 44, 44}},
        PngRow{"UpFirstIsACopy", {2, 7, 8, 9}, 3, 1, {7, 8, 9}},
        PngRow{"AverageFirstHalvesTheLeft", {3, 7, 8, 9}, 3, 1, {7, 11, 14}},
        PngRow{"PaethFirstIsSub", {4, 7, 8, 9}, 3, 1, {7, 15, 24}},
        PngRow{"None", {0, 1, 1, 1, 0, 7, 8, 9}, 3, 1, {1, 1, 1, 7, 8, 9}},
        PngRow{"Sub", {0, 1, 1, 1, 1, 7, 8, 9}, 3, 1, {1, 1, 1, 7, 15, 24}},
        PngRow{"Up", {0, 10, 20, 30, 2, 7, 8, 250}, 3, 1, {10, 20, 30, 17, 28, 24}},
        // 7 + 5; 8 + (12 + 21) / 2; 9 + (24 + 30) / 2
        PngRow{"Average", {0, 10, 21, 30, 3, 7, 8, 9}, 3, 1, {10, 21, 30, 12, 24, 36}},
        // The sum of 200 and 200 counts at full width.
        PngRow{"AverageAtFullWidth",
               {0, 200, 200, 0, 3, 100, 0, 0},
               3,
               1,
               {200, 200, 0, 200, 200, 100}},
        PngRow{
            "PaethFirstBytesAreUp", {0, 10, 20, 30, 4, 1, 0, 0}, 1, 3, {10, 20, 30, 11, 20, 30}}),
    [](auto const& row) { return row.param.name; });

// out[1] of a second row whose out[0] is a, with b above it and c above a. Kept: the differences
// keep their signs; the comments give d = a - c, e = b - c, f = d + e.
struct PaethRow {
  char const* name;
  int a, b, c;
  int choice;
};
class PaethVariant : public testing::TestWithParam<PaethRow> {};

TEST_P(PaethVariant, ChoosesBySignedDifferences) {
  auto const [name, a, b, c, choice] = GetParam();
  Bytes const data{0, BYTE(c), BYTE(b), 4, BYTE(a - c), 0};
  EXPECT_EQ(Undo(data, 2).data[3], choice);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PaethVariant,
    testing::Values(PaethRow{"EqualTakesA", 50, 50, 50, 50},   // 0 0 0
                    PaethRow{"LeftLarger", 60, 50, 40, 60},    // 20 10 30: e below both
                    PaethRow{"AboveLarger", 50, 60, 40, 60},   // 10 20 30: d not above f
                    PaethRow{"BothSmaller", 30, 40, 50, 50},   // -20 -10 -30: c, PNG takes a
                    PaethRow{"AboveSmaller", 50, 30, 40, 50},  // 10 -10 0: a
                    PaethRow{"LeftSmaller", 30, 60, 40, 60},   // -10 20 10: d not above f: b
                    PaethRow{"BothSmallerOtherWay", 40, 30, 50, 50}),  // -10 -20 -30: c
    [](auto const& row) { return row.param.name; });

TEST(PngRows, UnknownTagOfTheFirstRowSkipsItUntouched) {
  EXPECT_EQ(Undo({7, 1, 2, 2, 1, 1}, 2), (Undone{1, {7, 1, 8, 2, 1, 1}}));
}

TEST(PngRows, UnknownTagOfALaterRowFails) {
  EXPECT_EQ(Undo({0, 1, 2, 7, 1, 1}, 2), (Undone{0, {1, 2, 2, 7, 1, 1}}));
}

TEST(PngRows, ShortLaterRowFails) {
  EXPECT_EQ(Undo({0, 1, 2, 0, 1}, 2).result, 0);
  EXPECT_EQ(Undo({0, 1, 2, 0}, 2).result, 0);
}

TEST(PngRows, ShortFirstRowOfTagNoneFails) { EXPECT_EQ(Undo({0, 1}, 2).result, 0); }

// Only rows 2, 3 and 4 of the first row are decoded without the test; the byte outside reads as 0.
TEST(PngRows, FirstRowWithoutItsLastByteReadsItAsZero) {
  EXPECT_EQ(Undo({2, 1}, 2), (Undone{1, {1, 0}}));
}

TEST(PngRows, RowLongerThanTheDataFails) {
  EXPECT_EQ(Undo({2, 1}, 3), (Undone{0, {2, 1}}));
  EXPECT_EQ(Undo({2, 1}, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF).result, 0);
}

TEST(PngRows, EmptyDataIsDone) { EXPECT_EQ(Undo({}, 0).result, 1); }

struct WidthRow {
  DWORD columns, colors, bits;
  size_t row_bytes;
};

// Kept: bits are rounded to the nearest byte and not up. The first byte of the first row comes back
// in the second one, whose place and tag give the size.
TEST(PngRows, RowSizeIsRoundedToTheNearestByte) {
  for (auto const& [columns, colors, bits, row_bytes] : {WidthRow{9, 1, 1, 1},
                                                         {11, 1, 1, 1},
                                                         {12, 1, 1, 2},
                                                         {4, 1, 1, 1},
                                                         {5, 3, 1, 2},
                                                         {3, 3, 8, 9},
                                                         {1, 1, 16, 2},
                                                         {3, 1, 1, 0}}) {
    Bytes data(2 * (row_bytes + 1), 0);
    data[0] = 2;
    data[row_bytes + 1] = 2;
    Bytes rows = data;
    if (row_bytes > 0) {
      data[1] = 5;
      std::fill(rows.begin(), rows.begin() + static_cast<ptrdiff_t>(2 * row_bytes), BYTE{0});
      rows[0] = rows[row_bytes] = 5;
    }
    Undone const undone = Undo(data, columns, colors, bits);
    EXPECT_EQ(undone.result, 1) << columns << " " << colors << " " << bits;
    EXPECT_TRUE(std::equal(rows.begin(), rows.begin() + static_cast<ptrdiff_t>(2 * row_bytes),
                           undone.data.begin()))
        << columns << " " << colors << " " << bits;
  }
}

// Six bits a pixel are one byte; twelve are two.
TEST(PngRows, PixelSizeIsRoundedUp) {
  EXPECT_EQ(Undo({1, 1, 1, 1}, 4, 1, 6).data[2], 3);
  EXPECT_EQ(Undo({1, 1, 1, 1}, 2, 1, 12).data[2], 2);
}

}  // namespace

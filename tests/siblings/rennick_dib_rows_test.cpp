// Rows of a packed bitmap for the JPEG coder, and what a block lacks of them.
#include <gmock/gmock.h>
#include <siblings/rennick/dib_rows.h>
#include <tests/support/dib.h>

using namespace test;
using sorrelin::rennick::DibRows;

namespace {

Bytes Row(DibRows& rows, uint32_t y) {
  BYTE const* const row = rows.Row(y);
  return {row, row + size_t{rows.width()} * rows.bytes_per_pixel()};
}

DWORD RowNumber(LONG, LONG y) { return static_cast<DWORD>(y) * 0x010101 + 0x010101; }

Bytes HeaderOnly(LONG width, LONG height, WORD bits) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biBitCount = bits;
  Bytes bytes(sizeof header);
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes;
}

}  // namespace

TEST(JpegDibRows, TopRowIsTheLastOfTheBlock) {
  for (WORD const bits : {WORD{8}, WORD{24}}) {
    Bytes const block = MakeDib({.width = 5, .height = 3, .bits = bits}, RowNumber).Content();
    auto rows = DibRows::Of(block);
    ASSERT_TRUE(rows);
    EXPECT_EQ(Row(*rows, 0), Bytes(5u * bits / 8u, 1));
    EXPECT_EQ(Row(*rows, 2), Bytes(5u * bits / 8u, 3));
  }
}

TEST(JpegDibRows, BeginBehindTheColoursThatAreUsed) {
  std::vector<RGBQUAD> const palette(16, RGBQUAD{9, 9, 9, 9});
  for (WORD const bits : {WORD{8}, WORD{24}}) {
    DibSpec const spec{
        .width = 4, .height = 2, .bits = bits, .palette = palette, .colors_used = 16};
    Bytes const block = MakeDib(spec, RowNumber).Content();
    auto rows = DibRows::Of(block);
    EXPECT_EQ(Row(*rows, 1), Bytes(4u * bits / 8u, 2));
  }
}

TEST(JpegDibRows, BeginBehindALongerHeader) {
  Bytes block = MakeDib({.width = 4, .height = 1, .bits = 24}, RowNumber).Content();
  block.insert(block.begin() + 40, 68, 0xEE);
  block[0] = 108;
  auto rows = DibRows::Of(block);
  EXPECT_EQ(Row(*rows, 0), Bytes(12, 1));
}

TEST(JpegDibRows, MissingBytesAreZero) {
  Bytes block = MakeDib({.width = 4, .height = 3, .bits = 24}, RowNumber).Content();
  block.resize(40 + 12 + 5);
  auto rows = DibRows::Of(block);
  EXPECT_EQ(Row(*rows, 2), Bytes(12, 3));
  EXPECT_EQ(Row(*rows, 1), (Bytes{2, 2, 2, 2, 2, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Row(*rows, 0), Bytes(12, 0));
}

TEST(JpegDibRows, NumbersThatLeadOutOfTheBlockGiveZeros) {
  Bytes block = MakeDib({.width = 4, .height = 1, .bits = 8}, RowNumber).Content();
  std::fill_n(block.begin(), 4, BYTE{0xFF});
  std::fill_n(block.begin() + 32, 4, BYTE{0xFF});
  auto rows = DibRows::Of(block);
  ASSERT_TRUE(rows);
  EXPECT_EQ(Row(*rows, 0), Bytes(4, 0));
}

TEST(JpegDibRows, OtherDepthsAndSizesAreRefused) {
  EXPECT_TRUE(DibRows::Of(HeaderOnly(65500, 65500, 24)));
  EXPECT_FALSE(DibRows::Of(HeaderOnly(65501, 1, 24)));
  EXPECT_FALSE(DibRows::Of(HeaderOnly(1, 65501, 8)));
  EXPECT_FALSE(DibRows::Of(HeaderOnly(0, 1, 8)));
  EXPECT_FALSE(DibRows::Of(HeaderOnly(1, 0, 8)));
  EXPECT_FALSE(DibRows::Of(HeaderOnly(-1, 1, 8)));
  EXPECT_FALSE(DibRows::Of(HeaderOnly(1, -1, 24)));
  for (WORD const bits : {WORD{0}, WORD{1}, WORD{4}, WORD{16}, WORD{32}}) {
    EXPECT_FALSE(DibRows::Of(HeaderOnly(1, 1, bits))) << bits;
  }
}

TEST(JpegDibRows, BlockWithoutAWholeHeaderIsRefused) {
  Bytes block = HeaderOnly(1, 1, 24);
  block.pop_back();
  EXPECT_FALSE(DibRows::Of(block));
  EXPECT_FALSE(DibRows::Of({}));
}

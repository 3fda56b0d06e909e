// Blank bitmaps, copies and the places of a bitmap's parts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <tests/image/toolbox_pictures.h>

#include <algorithm>
#include <limits>

namespace {

using sorrelin::CreateBlankDIB;
using sorrelin::DuplicateBlock;
using sorrelin::GetColorCount;
using sorrelin::GetDIBBits;
using sorrelin::GetPaletteSize;
using test::Block;
using test::Bytes;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr LONG kMin = std::numeric_limits<LONG>::min();
constexpr LONG kMax = std::numeric_limits<LONG>::max();

Block Blank(LONG width, LONG height, int bits, bool white, int x_dpi = 300, int y_dpi = 150) {
  return Block(CreateBlankDIB({width, height}, x_dpi, y_dpi, bits, white));
}

Bytes Part(Bytes const& bytes, size_t from, size_t to) {
  return Bytes(bytes.begin() + static_cast<ptrdiff_t>(from),
               bytes.begin() + static_cast<ptrdiff_t>(to));
}

Bytes Header(DWORD size, WORD bits, DWORD colors_used) {
  BITMAPINFOHEADER header{};
  header.biSize = size;
  header.biBitCount = bits;
  header.biClrUsed = colors_used;
  return test::HeaderBytes(header);
}

Bytes CoreHeader(BYTE bits) { return {12, 0, 0, 0, 5, 0, 6, 0, 1, 0, bits, 0}; }

TEST(CreateBlankDIB, HeaderHasSizeDepthAndResolution) {
  BITMAPINFOHEADER const header = test::HeaderOf(Blank(33, 5, 1, true).Content());
  EXPECT_EQ(header.biSize, 40u);
  EXPECT_EQ(header.biWidth, 33);
  EXPECT_EQ(header.biHeight, 5);
  EXPECT_EQ(header.biPlanes, 1);
  EXPECT_EQ(header.biBitCount, 1);
  EXPECT_EQ(header.biCompression, 0u);
  EXPECT_EQ(header.biSizeImage, 8u * 5u);
  EXPECT_EQ(header.biXPelsPerMeter, 11811);  // 300 * 39.37 = 11811.0
  EXPECT_EQ(header.biYPelsPerMeter, 5906);   // 150 * 39.37 = 5905.5, + 0.5
  EXPECT_EQ(header.biClrUsed, 0u);
  EXPECT_EQ(header.biClrImportant, 0u);
}

TEST(CreateBlankDIB, BlockHasFourBytesToSpare) {
  EXPECT_EQ(GlobalSize(Blank(33, 5, 1, true)), 8u * 5 + 52);
  EXPECT_EQ(GlobalSize(Blank(33, 5, 8, true)), 36u * 5 + 1068);
  EXPECT_EQ(GlobalSize(Blank(33, 5, 24, true)), 100u * 5 + 44);
}

TEST(CreateBlankDIB, SpareBytesAreZero) {
  for (int const bits : {1, 8, 24}) {
    Bytes const bytes = Blank(3, 2, bits, true).Content();
    EXPECT_THAT(Part(bytes, bytes.size() - 4, bytes.size()), Each(0)) << bits;
  }
}

TEST(CreateBlankDIB, BilevelTableIsBlackAndWhite) {
  for (bool const white : {false, true}) {
    Bytes const bytes = Blank(9, 2, 1, white).Content();
    EXPECT_THAT(Part(bytes, 40, 48), ElementsAre(0, 0, 0, 0, 255, 255, 255, 0));
    EXPECT_THAT(Part(bytes, 48, 56), Each(white ? 255 : 0));
  }
}

TEST(CreateBlankDIB, IndexedTableIsWhiteAndThenBlack) {
  Bytes const bytes = Blank(5, 2, 8, true).Content();
  EXPECT_THAT(Part(bytes, 40, 44), ElementsAre(255, 255, 255, 0));
  EXPECT_THAT(Part(bytes, 44, 1064), Each(0));
}

TEST(CreateBlankDIB, IndexedPixelsAreZeroForWhiteAndTwoForBlack) {
  EXPECT_THAT(Part(Blank(5, 2, 8, true).Content(), 1064, 1080), Each(0));
  EXPECT_THAT(Part(Blank(5, 2, 8, false).Content(), 1064, 1080), Each(2));
}

TEST(CreateBlankDIB, TrueColorPixelsAreFull) {
  EXPECT_THAT(Part(Blank(3, 2, 24, true).Content(), 40, 64), Each(255));
  EXPECT_THAT(Part(Blank(3, 2, 24, false).Content(), 40, 64), Each(0));
}

TEST(CreateBlankDIB, ResolutionsFrom50To9999) {
  for (int const dpi : {50, 9999}) {
    EXPECT_NE(Blank(1, 1, 1, true, dpi, 300).get(), nullptr) << dpi;
    EXPECT_NE(Blank(1, 1, 1, true, 300, dpi).get(), nullptr) << dpi;
  }
  for (int const dpi : {49, 10000, 0, -300}) {
    EXPECT_EQ(Blank(1, 1, 1, true, dpi, 300).get(), nullptr) << dpi;
    EXPECT_EQ(Blank(1, 1, 1, true, 300, dpi).get(), nullptr) << dpi;
  }
}

TEST(CreateBlankDIB, ResolutionsAreRounded) {
  BITMAPINFOHEADER const header = test::HeaderOf(Blank(1, 1, 1, true, 50, 9999).Content());
  EXPECT_EQ(header.biXPelsPerMeter, 1968);    // 39.37 is a little less in binary: 1968.4999
  EXPECT_EQ(header.biYPelsPerMeter, 393661);  // 9999 * 39.37 = 393660.63
}

TEST(CreateBlankDIB, OtherDepthsAreRefused) {
  for (int const bits : {0, 2, 4, 15, 16, 32, -1}) {
    EXPECT_EQ(Blank(1, 1, bits, true).get(), nullptr) << bits;
  }
}

TEST(CreateBlankDIB, WidthBelowOneIsRefused) {
  for (LONG const width : {LONG{0}, LONG{-1}, kMin})
    EXPECT_EQ(Blank(width, 1, 1, true).get(), nullptr);
}

TEST(CreateBlankDIB, HeightZeroIsAnEmptyPicture) {
  EXPECT_EQ(GlobalSize(Blank(1, 0, 1, true)), 52u);
}

TEST(CreateBlankDIB, SizePast32BitsIsRefused) {
  EXPECT_EQ(Blank(kMax, kMax, 24, true).get(), nullptr);
  EXPECT_EQ(Blank(1, -1, 1, true).get(), nullptr);
  EXPECT_EQ(Blank(1, kMin, 1, true).get(), nullptr);
  EXPECT_EQ(Blank(32, 1 << 30, 1, false).get(), nullptr);        // 4 << 30
  EXPECT_EQ(Blank(32, (1 << 30) - 1, 1, false).get(), nullptr);  // fits but for table and header
}

// Addresses of 32 bits have no room for it.
TEST(CreateBlankDIB, LargestPictureIsMade) {
  Block const dib = Blank(32, (1 << 30) - 14, 1, false);
  EXPECT_EQ(GlobalSize(dib), sizeof(void*) == 4 ? 0 : 0xFFFFFFC8u + 52);
}

TEST(DuplicateBlock, CopiesEveryByte) {
  Bytes const bytes = test::ScrambledPicture(7, 3, 8);
  Block const block = test::MakeBlock(bytes);
  Block const copy(DuplicateBlock(block));
  EXPECT_NE(copy.get(), block.get());
  EXPECT_EQ(copy.Content(), bytes);
}

TEST(DuplicateBlock, RefusesWhatCannotBeLocked) {
  EXPECT_EQ(DuplicateBlock(nullptr), nullptr);
  EXPECT_EQ(DuplicateBlock(INVALID_HANDLE_VALUE), nullptr);
  EXPECT_EQ(DuplicateBlock(Block(GlobalAlloc(GHND, 0))), nullptr);
}

TEST(GetColorCount, DepthDecidesWhereTheHeaderDoesNotTell) {
  EXPECT_EQ(GetColorCount(Header(40, 1, 0)), 2u);
  EXPECT_EQ(GetColorCount(Header(40, 4, 0)), 16u);
  EXPECT_EQ(GetColorCount(Header(40, 8, 0)), 256u);
  for (WORD const bits : {WORD{0}, WORD{2}, WORD{16}, WORD{24}, WORD{32}}) {
    EXPECT_EQ(GetColorCount(Header(40, bits, 0)), 0u) << bits;
  }
}

TEST(GetColorCount, NumberInTheHeaderCountsForFortyBytesOnly) {
  EXPECT_EQ(GetColorCount(Header(40, 8, 17)), 17u);
  EXPECT_EQ(GetColorCount(Header(40, 24, 5)), 5u);
  EXPECT_EQ(GetColorCount(Header(108, 8, 17)), 256u);
  EXPECT_EQ(GetColorCount(Header(108, 24, 5)), 0u);
}

TEST(GetColorCount, CoreHeaderHasItsDepthElsewhere) {
  EXPECT_EQ(GetColorCount(CoreHeader(1)), 2u);
  EXPECT_EQ(GetColorCount(CoreHeader(4)), 16u);
  EXPECT_EQ(GetColorCount(CoreHeader(8)), 256u);
  EXPECT_EQ(GetColorCount(CoreHeader(24)), 0u);
}

TEST(GetPaletteSize, FourBytesAnEntryAndThreeInACoreBitmap) {
  EXPECT_EQ(GetPaletteSize(Header(40, 8, 0)), 1024u);
  EXPECT_EQ(GetPaletteSize(Header(40, 8, 17)), 68u);
  EXPECT_EQ(GetPaletteSize(Header(40, 8, 0xFFFFFFFF)), uint64_t{0xFFFFFFFF} * 4);
  EXPECT_EQ(GetPaletteSize(CoreHeader(8)), 768u);
  EXPECT_EQ(GetPaletteSize(CoreHeader(24)), 0u);
}

TEST(GetPaletteSize, HeaderThatIsCutReadsAsZero) {
  EXPECT_EQ(GetPaletteSize(Bytes{}), 0u);
  EXPECT_EQ(GetPaletteSize(Bytes{40, 0, 0, 0}), 0u);
  EXPECT_EQ(GetPaletteSize(Bytes{12, 0, 0, 0, 5, 0, 6, 0, 1, 0, 8}), 768u);
}

TEST(GetDIBBits, LiesBehindHeaderAndTable) {
  for (int const bits : {1, 4, 8, 24}) {
    Bytes bytes = test::ScrambledPicture(3, 2, bits);
    size_t const table = bits <= 8 ? size_t{4} << bits : 0;
    EXPECT_EQ(GetDIBBits(bytes).data(), bytes.data() + 40 + table);
    EXPECT_EQ(GetDIBBits(bytes).size(), bytes.size() - 40 - table);
  }
}

TEST(GetDIBBits, HeaderSizeIsTakenAsItIs) {
  Bytes core = CoreHeader(4);
  core.resize(12 + 48 + 9);
  EXPECT_EQ(GetDIBBits(core).data(), core.data() + 60);
  Bytes longer = Header(108, 1, 0);
  longer.resize(120);
  EXPECT_EQ(GetDIBBits(longer).data(), longer.data() + 116);
}

TEST(GetDIBBits, IsEmptyWhenTheBlockEndsBefore) {
  Bytes bytes = Header(40, 8, 0xFFFFFFFF);
  EXPECT_TRUE(GetDIBBits(bytes).empty());
  Bytes none;
  EXPECT_TRUE(GetDIBBits(none).empty());
}

}  // namespace

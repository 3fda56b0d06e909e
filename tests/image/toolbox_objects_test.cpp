// Colour tables, wrappers of blocks, and text conversion.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/image/toolbox/color_table.h>
#include <sorrelin/image/toolbox/dib_image.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <sorrelin/image/toolbox/global_buffer.h>
#include <sorrelin/image/toolbox/wide_to_utf8.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/image/toolbox_pictures.h>
#include <tests/support/environment.h>
#include <tests/support/temp_dir.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

namespace {

using sorrelin::DibImage;
using sorrelin::GlobalBuffer;
using sorrelin::InitBitmapInfoHeader;
using sorrelin::SetDefaultColorTable;
using sorrelin::WideToUtf8;
using test::Block;
using test::Bytes;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr LONG kMax = std::numeric_limits<LONG>::max();

BITMAPINFOHEADER InitHeader(LONG width, LONG height, int bits) {
  BITMAPINFOHEADER header{};
  EXPECT_TRUE(InitBitmapInfoHeader(header, width, height, bits));
  return header;
}

// A block with header and table for a depth, and a byte of 9 after it; the table is all 9 too.
Bytes TableBlock(int bits, DWORD colors_used) {
  BITMAPINFOHEADER header = InitHeader(1, 1, bits);
  header.biClrUsed = colors_used;
  Bytes bytes = test::HeaderBytes(header);
  bytes.resize(40 + sorrelin::GetPaletteSize(bytes) + 1, BYTE{9});
  return bytes;
}

Bytes Table(Bytes const& block) { return Bytes(block.begin() + 40, block.end()); }

// The system error that a constructor throws; 999 if it does not.
template <typename Work>
DWORD Thrown(Work work) {
  try {
    work();
    return 999;
  } catch (DWORD error) {
    return error;
  }
}

TEST(InitBitmapInfoHeader, RoundsTheDepthUp) {
  struct {
    int bits;
    WORD depth;
    DWORD colors;
  } const kRows[] = {{-1, 1, 2},  {0, 1, 2},  {1, 1, 2},   {2, 4, 16},  {4, 4, 16}, {5, 8, 256},
                     {8, 8, 256}, {9, 24, 0}, {16, 24, 0}, {24, 24, 0}, {32, 24, 0}};
  for (auto const& row : kRows) {
    BITMAPINFOHEADER const header = InitHeader(1, 1, row.bits);
    EXPECT_EQ(header.biBitCount, row.depth) << row.bits;
    EXPECT_EQ(header.biClrUsed, row.colors) << row.bits;
    EXPECT_EQ(header.biClrImportant, row.colors) << row.bits;
  }
}

TEST(InitBitmapInfoHeader, FillsEveryField) {
  BITMAPINFOHEADER header;
  std::memset(&header, 0xEE, sizeof header);
  EXPECT_TRUE(InitBitmapInfoHeader(header, 33, 7, 4));
  EXPECT_EQ(header.biSize, 40u);
  EXPECT_EQ(header.biWidth, 33);
  EXPECT_EQ(header.biHeight, 7);
  EXPECT_EQ(header.biPlanes, 1);
  EXPECT_EQ(header.biCompression, 0u);
  EXPECT_EQ(header.biSizeImage, 20u * 7);  // 132 bits in 20 bytes
  EXPECT_EQ(header.biXPelsPerMeter, 0);
  EXPECT_EQ(header.biYPelsPerMeter, 0);
}

TEST(InitBitmapInfoHeader, PictureSizeByDepth) {
  EXPECT_EQ(InitHeader(33, 2, 1).biSizeImage, 16u);
  EXPECT_EQ(InitHeader(5, 2, 8).biSizeImage, 16u);
  EXPECT_EQ(InitHeader(3, 2, 24).biSizeImage, 24u);
  EXPECT_EQ(InitHeader(0, 2, 24).biSizeImage, 0u);
}

TEST(InitBitmapInfoHeader, SizesThatDoNotFitAreRefused) {
  BITMAPINFOHEADER header{};
  header.biSize = 1;
  EXPECT_FALSE(InitBitmapInfoHeader(header, -1, 1, 1));
  EXPECT_FALSE(InitBitmapInfoHeader(header, 1, -1, 1));
  EXPECT_FALSE(InitBitmapInfoHeader(header, kMax, kMax, 24));
  EXPECT_FALSE(InitBitmapInfoHeader(header, 1, 1 << 30, 1));
  EXPECT_EQ(header.biSize, 1u);
  EXPECT_TRUE(InitBitmapInfoHeader(header, 1, (1 << 30) - 1, 1));
}

TEST(SetDefaultColorTable, BilevelIsBlackAndWhite) {
  Bytes block = TableBlock(1, 0);
  SetDefaultColorTable(block);
  EXPECT_THAT(Table(block), ElementsAre(0, 0, 0, 0, 255, 255, 255, 0, 9));
}

TEST(SetDefaultColorTable, SixteenColours) {
  constexpr BYTE kExpected[16][3] = {
      {0, 0, 0},     {128, 0, 0},     {0, 128, 0},     {128, 128, 0},  {0, 0, 128}, {128, 0, 128},
      {0, 128, 128}, {192, 192, 192}, {128, 128, 128}, {255, 0, 0},    {0, 255, 0}, {255, 255, 0},
      {0, 0, 255},   {255, 0, 255},   {0, 255, 255},   {255, 255, 255}};
  Bytes expected;
  for (BYTE const(&color)[3] : kExpected) {
    expected.insert(expected.end(), {color[2], color[1], color[0], 0});
  }
  expected.push_back(9);
  Bytes block = TableBlock(4, 0);
  SetDefaultColorTable(block);
  EXPECT_EQ(Table(block), expected);
}

TEST(SetDefaultColorTable, BitFieldsOfTheIndex) {
  Bytes expected;
  for (int i = 0; i < 256; ++i) {
    int const red = (i / 32) * 36;
    int const green = (i / 4 % 8) * 36;
    int const blue = (i % 4) * 85;
    expected.insert(expected.end(), {static_cast<BYTE>(blue), static_cast<BYTE>(green),
                                     static_cast<BYTE>(red), BYTE{0}});
  }
  expected.push_back(9);
  Bytes block = TableBlock(8, 0);
  SetDefaultColorTable(block);
  EXPECT_EQ(Table(block), expected);
  EXPECT_THAT(Bytes(block.begin() + 40 + 4 * 255, block.begin() + 40 + 4 * 256),
              ElementsAre(255, 252, 252, 0));
}

TEST(SetDefaultColorTable, ShorterTableKeepsWhatFollows) {
  Bytes block = TableBlock(8, 3);
  SetDefaultColorTable(block);
  EXPECT_THAT(Table(block), ElementsAre(0, 0, 0, 0, 85, 0, 0, 0, 170, 0, 0, 0, 9));
}

TEST(SetDefaultColorTable, LongerTableIsFilledAsFarAsTheDepthGoes) {
  Bytes block = TableBlock(1, 3);
  SetDefaultColorTable(block);
  EXPECT_THAT(Table(block), ElementsAre(0, 0, 0, 0, 255, 255, 255, 0, 9, 9, 9, 9, 9));
}

TEST(SetDefaultColorTable, CoreBitmapHasTriples) {
  Bytes block{12, 0, 0, 0, 5, 0, 6, 0, 1, 0, 1, 0, 9, 9, 9, 9, 9, 9, 9};
  SetDefaultColorTable(block);
  EXPECT_THAT(Bytes(block.begin() + 12, block.end()), ElementsAre(0, 0, 0, 255, 255, 255, 9));
}

TEST(SetDefaultColorTable, TrueColorIsLeftAlone) {
  Bytes block = TableBlock(24, 2);
  Bytes const before = block;
  SetDefaultColorTable(block);
  EXPECT_EQ(block, before);
}

TEST(SetDefaultColorTable, EntriesThatTheBlockLacksAreDropped) {
  for (size_t const size : {0u, 3u, 14u, 16u, 40u, 41u, 46u}) {
    Bytes block = TableBlock(8, 0);
    block.resize(size);
    SetDefaultColorTable(block);
    EXPECT_EQ(block.size(), size);
  }
  Bytes block = TableBlock(1, 0);
  block.resize(46);
  SetDefaultColorTable(block);
  EXPECT_THAT(Table(block), ElementsAre(0, 0, 0, 0, 255, 255));
}

TEST(TableColor, ReadsAndWritesEntries) {
  Bytes block = TableBlock(8, 0);
  sorrelin::SetTableColor(block, 255, {1, 2, 3, 4});
  EXPECT_THAT(Bytes(block.end() - 6, block.end()), ElementsAre(9, 1, 2, 3, 4, 9));
  RGBQUAD const color = sorrelin::TableColor(block, 255);
  EXPECT_EQ(color.rgbBlue, 1);
  EXPECT_EQ(color.rgbGreen, 2);
  EXPECT_EQ(color.rgbRed, 3);
  EXPECT_EQ(color.rgbReserved, 4);
}

TEST(TableColor, StaysInTheBlock) {
  Bytes block = TableBlock(8, 0);
  block.resize(46);
  sorrelin::SetTableColor(block, 1, {1, 2, 3, 4});
  sorrelin::SetTableColor(block, 0xFFFFFFFF, {1, 2, 3, 4});
  EXPECT_THAT(Table(block), ElementsAre(9, 9, 9, 9, 1, 2));
  EXPECT_EQ(sorrelin::TableColor(block, 1).rgbGreen, 2);
  EXPECT_EQ(sorrelin::TableColor(block, 1).rgbRed, 0);
  EXPECT_EQ(sorrelin::TableColor(block, 0xFFFFFFFF).rgbBlue, 0);
}

// Each byte counts up and starts again at 256, which moves the next one on.
TEST(SpreadColor, StepsRedThenGreenThenBlue) {
  BYTE red = 0;
  BYTE green = 0;
  BYTE blue = 0;
  for (DWORD i = 0; i < 255; ++i) {
    RGBQUAD const color = sorrelin::SpreadColor(i);
    EXPECT_EQ(color.rgbRed, red) << i;
    EXPECT_EQ(color.rgbGreen, green) << i;
    EXPECT_EQ(color.rgbBlue, blue) << i;
    EXPECT_EQ(color.rgbReserved, 0) << i;
    red = static_cast<BYTE>(red + 32);
    if (red == 0) green = static_cast<BYTE>(green + 32);
    if (red == 0 && green == 0) blue = static_cast<BYTE>(blue + 64);
  }
}

TEST(SpreadColor, LastOneIsWhite) {
  RGBQUAD const color = sorrelin::SpreadColor(255);
  EXPECT_EQ(color.rgbRed, 255);
  EXPECT_EQ(color.rgbGreen, 255);
  EXPECT_EQ(color.rgbBlue, 255);
}

TEST(GlobalBuffer, CopiesBytes) {
  Bytes const bytes{1, 2, 3};
  GlobalBuffer const buffer(bytes.data(), 3);
  EXPECT_EQ(buffer.nSize, 3u);
  Block const copy(sorrelin::DuplicateBlock(buffer.hBlock));
  EXPECT_EQ(copy.Content(), bytes);
}

TEST(GlobalBuffer, ReadsAFile) {
  test::TempDir const dir;
  Bytes const bytes(100000, BYTE{7});
  test::WriteAll(dir / "file", bytes);
  GlobalBuffer const buffer(sorrelin::ToWide((dir / "file").string().c_str()).c_str());
  EXPECT_EQ(buffer.nSize, bytes.size());
  Block const copy(sorrelin::DuplicateBlock(buffer.hBlock));
  EXPECT_EQ(copy.Content(), bytes);
}

TEST(GlobalBuffer, NoBytesMakeAnEmptyBlock) {
  test::TempDir const dir;
  test::WriteAll(dir / "file", {});
  GlobalBuffer const from_file(sorrelin::ToWide((dir / "file").string().c_str()).c_str());
  EXPECT_EQ(from_file.nSize, 0u);
  EXPECT_NE(from_file.hBlock, nullptr);
  GlobalBuffer const from_bytes(nullptr, 0);
  EXPECT_EQ(from_bytes.nSize, 0u);
  EXPECT_EQ(GlobalSize(from_bytes.hBlock), 0u);
}

TEST(GlobalBuffer, ThrowsTheSystemsError) {
  test::TempDir const dir;
  sorrelin::WideString const missing = sorrelin::ToWide((dir / "missing").string().c_str());
  EXPECT_EQ(Thrown([&] { GlobalBuffer(missing.c_str()); }), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Thrown([&] { GlobalBuffer(nullptr, 5); }), ERROR_INVALID_PARAMETER);
}

// A file of the system that claims a page and gives a line.
TEST(GlobalBuffer, ThrowsForAFileThatEndsBeforeItsSize) {
  char const* const path = "/sys/devices/system/cpu/online";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "needs sysfs";
  ASSERT_LT(test::ReadAll(path).size(), std::filesystem::file_size(path));
  EXPECT_THROW(GlobalBuffer(sorrelin::ToWide(path).c_str()), DWORD);
}

TEST(GlobalBuffer, RefusesAFileOfFourGigabytes) {
  test::TempDir const dir;
  test::WriteAll(dir / "file", {});
  std::filesystem::resize_file(dir / "file", uint64_t{1} << 32);
  sorrelin::WideString const path = sorrelin::ToWide((dir / "file").string().c_str());
  EXPECT_EQ(Thrown([&] { GlobalBuffer(path.c_str()); }), ERROR_FILE_TOO_LARGE);
}

TEST(DibImage, TakesABitmapOver) {
  test::DibSpec spec;
  spec.width = 5;
  spec.height = 3;
  spec.bits = 8;
  spec.x_per_metre = 11811;
  spec.y_per_metre = 2835;
  Block dib = test::MakeDib(spec, [](LONG, LONG) { return 0u; });
  static_cast<BITMAPINFOHEADER*>(GlobalLock(dib))->biSizeImage = 24;
  GlobalUnlock(dib);
  DibImage image(std::exchange(dib, Block()).get());
  EXPECT_EQ(image.nWidth, 5);
  EXPECT_EQ(image.nHeight, 3);
  EXPECT_EQ(image.nDpiX, 300);  // 11811 / 39.3701 + 0.5 = 300.4995
  EXPECT_EQ(image.nDpiY, 72);   // 2835 / 39.3701 + 0.5 = 72.509
  EXPECT_EQ(image.nByteSize, 64u);
}

TEST(DibImage, ResolutionIsTruncatedAfterAddingAHalf) {
  struct {
    LONG per_metre, dpi;
  } const kRows[] = {{0, 0}, {19, 0}, {20, 1}, {3917, 99}, {3918, 100}, {11830, 300}, {11831, 301}};
  for (auto const& row : kRows) {
    test::DibSpec spec;
    spec.x_per_metre = row.per_metre;
    Block dib = test::MakeDib(spec, [](LONG, LONG) { return 0u; });
    DibImage const image(std::exchange(dib, Block()).get());
    EXPECT_EQ(image.nDpiX, row.dpi) << row.per_metre;
  }
}

// 1968520 / 39.3701 + 0.5 is 50000.88; by the factor of new bitmaps, 39.37, it would be 50001.01.
TEST(DibImage, FactorOfABitmapTakenOverIsNotThatOfNewOnes) {
  Block dib = test::MakeDib({.bits = 24, .x_per_metre = 1968520}, [](LONG, LONG) { return 0u; });
  DibImage image(dib);
  EXPECT_EQ(image.nDpiX, 50000);
  image.Detach();
}

TEST(DibImage, MakesABlankBitmap) {
  DibImage const image(33, 5, 300, 150, 1, true);
  ASSERT_NE(image.hDIB, nullptr);
  EXPECT_EQ(image.nWidth, 33);
  EXPECT_EQ(image.nHeight, 5);
  EXPECT_EQ(image.nDpiX, 300);
  EXPECT_EQ(image.nDpiY, 150);
  EXPECT_EQ(image.nByteSize, 40u + 40u);
  Block const expected(sorrelin::CreateBlankDIB({33, 5}, 300, 150, 1, true));
  Block const copy(sorrelin::DuplicateBlock(image.hDIB));
  EXPECT_EQ(copy.Content(), expected.Content());
}

TEST(DibImage, RefusedBitmapLeavesItEmpty) {
  DibImage const image(33, 5, 49, 150, 1, true);
  EXPECT_EQ(image.hDIB, nullptr);
  EXPECT_EQ(image.nWidth, 0);
  EXPECT_EQ(image.nDpiX, 0);
  EXPECT_EQ(image.nByteSize, 0u);
}

TEST(DibImage, CopyHasABlockOfItsOwn) {
  DibImage const image(7, 2, 100, 200, 24, false);
  DibImage const copy(image);
  EXPECT_NE(copy.hDIB, image.hDIB);
  EXPECT_EQ(GlobalSize(copy.hDIB), GlobalSize(image.hDIB));
  EXPECT_EQ(copy.nWidth, 7);
  EXPECT_EQ(copy.nHeight, 2);
  EXPECT_EQ(copy.nDpiX, 100);
  EXPECT_EQ(copy.nDpiY, 200);
  EXPECT_EQ(copy.nByteSize, image.nByteSize);
}

TEST(DibImage, CopyOfNothingIsNothing) {
  DibImage const image(nullptr);
  DibImage const copy(image);
  EXPECT_EQ(copy.hDIB, nullptr);
}

TEST(DibImage, DetachGivesTheBitmapAway) {
  HDIB dib = nullptr;
  {
    DibImage image(7, 2, 100, 200, 24, false);
    dib = image.hDIB;
    EXPECT_EQ(image.Detach(), dib);
    EXPECT_EQ(image.hDIB, nullptr);
  }
  Block const owner(dib);
  EXPECT_EQ(GlobalSize(owner), 44u + 48u);
}

TEST(DibImage, DestructorFreesTheBitmap) {
  HDIB dib = nullptr;
  {
    DibImage const image(7, 2, 100, 200, 24, false);
    dib = image.hDIB;
  }
  EXPECT_EQ(GlobalLock(dib), nullptr);
}

TEST(DibImage, HandleThatIsNoneHasNoGeometry) {
  DibImage const image(nullptr);
  EXPECT_EQ(image.nWidth, 0);
  EXPECT_EQ(image.nByteSize, 0u);
}

TEST(DibImage, HeaderThatIsCutReadsAsZero) {
  DibImage const image(GlobalAlloc(GHND, 3));
  EXPECT_EQ(image.nWidth, 0);
  EXPECT_EQ(image.nDpiX, 0);
  EXPECT_EQ(image.nByteSize, 40u);
}

TEST(DibImage, HasNoDrawingContextHere) {
  DibImage image(7, 2, 100, 200, 24, false);
  EXPECT_EQ(image.GetDrawingDC(), nullptr);
  image.ReleaseDrawingDC();
  EXPECT_EQ(image.hDC, nullptr);
  EXPECT_EQ(image.pHeader, nullptr);
}

TEST(WideToUtf8, ConvertsWithAByteToSpare) {
  std::unique_ptr<char, decltype(&std::free)> const text(
      WideToUtf8(SORRELIN_TEXT("a\u00E9\u043C\xD83D\xDE00")), &std::free);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(std::string(text.get()), "a\xC3\xA9\xD0\xBC\xF0\x9F\x98\x80");
  EXPECT_EQ(text.get()[std::strlen(text.get()) + 1], 0);
  EXPECT_GE(test::RoomOf(text.get()), std::strlen(text.get()) + 2);
}

TEST(WideToUtf8, EmptyText) {
  std::unique_ptr<char, decltype(&std::free)> const text(WideToUtf8(SORRELIN_TEXT("")), &std::free);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text.get()[0], 0);
  EXPECT_EQ(text.get()[1], 0);
}

TEST(WideToUtf8, NullIsNull) { EXPECT_EQ(WideToUtf8(nullptr), nullptr); }

}  // namespace

// BMP files are made by hand, 3 pixels wide and 2 high, and read back pixel by pixel.
#include "tools/formats/bmp_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace sorrelin::tool {
namespace {

using ::testing::ElementsAre;

struct BmpForm {
  DWORD header = 40;
  DWORD width = 3;
  DWORD height = 2;
  DWORD bits = 24;
  DWORD coding = 0;
  DWORD colours = 0;
  std::vector<DWORD> tail = {};  // masks or palette, after the first 40 bytes of the header
};

void Put(std::vector<BYTE>& file, DWORD number, int bytes) {
  for (int i = 0; i < bytes; ++i) file.push_back(static_cast<BYTE>(number >> (8 * i)));
}

std::vector<BYTE> Bmp(BmpForm const& form, std::vector<BYTE> const& rows) {
  std::vector<BYTE> file = {'B', 'M'};
  DWORD const start = static_cast<DWORD>(54 + 4 * form.tail.size());
  Put(file, start + static_cast<DWORD>(rows.size()), 4);
  Put(file, 0, 4);
  Put(file, start, 4);
  for (DWORD number : {form.header, form.width, form.height}) Put(file, number, 4);
  Put(file, 1, 2);
  Put(file, form.bits, 2);
  for (DWORD number : std::initializer_list<DWORD>{form.coding, 0, 11811, 5906, form.colours, 0}) {
    Put(file, number, 4);
  }
  for (DWORD number : form.tail) Put(file, number, 4);
  file.insert(file.end(), rows.begin(), rows.end());
  return file;
}

// Red, green, blue of each pixel, row by row from the top; empty if the file is refused.
std::vector<DWORD> Colours(std::vector<BYTE> const& file) {
  auto const picture = DecodeBmp(file);
  if (!picture) return {};
  Pix* const pix = picture->pix.get();
  PixPtr const plain(pixGetColormap(pix) == nullptr
                         ? pixConvertTo32(pix)
                         : pixRemoveColormap(pix, REMOVE_CMAP_TO_FULL_COLOR));
  std::vector<DWORD> colours;
  for (int y = 0; y < pixGetHeight(plain.get()); ++y) {
    for (int x = 0; x < pixGetWidth(plain.get()); ++x) {
      l_uint32 pixel = 0;
      pixGetPixel(plain.get(), x, y, &pixel);
      colours.push_back(pixel >> 8);
    }
  }
  return colours;
}

// The lower row comes first: blue, green, red; then white, black, 0x102030.
std::vector<BYTE> Rows32(BYTE fourth) {
  return {255, 0,   0,   fourth, 0, 255, 0, fourth, 0,    0,    255,  fourth,
          255, 255, 255, fourth, 0, 0,   0, fourth, 0x30, 0x20, 0x10, fourth};
}

auto ShowsSixColours() {
  return ElementsAre(0xFFFFFFu, 0x000000u, 0x102030u, 0x0000FFu, 0x00FF00u, 0xFF0000u);
}

BmpForm Form(DWORD bits, DWORD coding, std::vector<DWORD> tail = {}) {
  BmpForm form;
  form.bits = bits;
  form.coding = coding;
  form.tail = std::move(tail);
  return form;
}

TEST(BmpFile, FourthByteOf32BitsIsNoColour) {
  for (BYTE const fourth : {BYTE{0}, BYTE{128}, BYTE{255}}) {
    EXPECT_THAT(Colours(Bmp(Form(32, 0), Rows32(fourth))), ShowsSixColours());
  }
}

TEST(BmpFile, ResolutionIsInDotsPerInch) {
  auto const picture = DecodeBmp(Bmp(Form(32, 0), Rows32(0)));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->dpi.x, 300);
  EXPECT_EQ(picture->dpi.y, 150);
}

TEST(BmpFile, NegativeHeightStartsWithTheTopRow) {
  BmpForm form = Form(32, 0);
  form.height = static_cast<DWORD>(-2);
  EXPECT_THAT(Colours(Bmp(form, Rows32(0))),
              ElementsAre(0x0000FFu, 0x00FF00u, 0xFF0000u, 0xFFFFFFu, 0x000000u, 0x102030u));
}

TEST(BmpFile, RowsOf24BitsArePadded) {
  std::vector<BYTE> const rows = {255, 0,   0,   0,   255, 0, 0, 0,    255,  9,   9,
                                  9,   255, 255, 255, 0,   0, 0, 0x30, 0x20, 0x10};
  EXPECT_THAT(Colours(Bmp(Form(24, 0), rows)), ShowsSixColours());
}

TEST(BmpFile, SixteenBitsHaveFiveForEachColour) {
  BmpForm form = Form(16, 0);
  form.height = 1;
  std::vector<BYTE> const rows = {0x00, 0x7C, 0xE0, 0x03, 0x10, 0x80};
  // 16 of 31 is 132 of 255, and the highest bit means nothing.
  EXPECT_THAT(Colours(Bmp(form, rows)), ElementsAre(0xFF0000u, 0x00FF00u, 0x000084u));
}

TEST(BmpFile, MasksTellWhereColoursLie) {
  BmpForm form = Form(16, 3, {0xF800, 0x07E0, 0x001F});
  form.height = 1;
  std::vector<BYTE> const rows = {0x00, 0xF8, 0xE0, 0x07, 0x1F, 0x00};
  EXPECT_THAT(Colours(Bmp(form, rows)), ElementsAre(0xFF0000u, 0x00FF00u, 0x0000FFu));
  BmpForm const swapped = Form(32, 3, {0x0000FF, 0x00FF00, 0xFF0000});
  EXPECT_THAT(Colours(Bmp(swapped, Rows32(0))),
              ElementsAre(0xFFFFFFu, 0x000000u, 0x302010u, 0xFF0000u, 0x00FF00u, 0x0000FFu));
}

BmpForm WithAlpha() {
  BmpForm form = Form(32, 3, {0xFF0000, 0x00FF00, 0x0000FF, 0xFF000000});
  form.header = 56;
  form.height = 1;
  return form;
}

TEST(BmpFile, AlphaIsLaidOnWhite) {
  std::vector<BYTE> const rows = {0, 0, 255, 0, 0, 0, 255, 51, 0, 0, 255, 255};
  EXPECT_THAT(Colours(Bmp(WithAlpha(), rows)), ElementsAre(0xFFFFFFu, 0xFFCCCCu, 0xFF0000u));
}

TEST(BmpFile, AlphaThatIsNowhereSetHidesNothing) {
  std::vector<BYTE> const rows = {0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0};
  EXPECT_THAT(Colours(Bmp(WithAlpha(), rows)), ElementsAre(0xFF0000u, 0x00FF00u, 0x0000FFu));
}

TEST(BmpFile, PalettesKeepTheirDepth) {
  BmpForm form = Form(4, 0, {0xFF0000, 0x00FF00});
  form.colours = 2;
  auto const file = Bmp(form, {0x01, 0x00, 0, 0, 0x10, 0x20, 0, 0});
  EXPECT_THAT(Colours(file),
              ElementsAre(0x00FF00u, 0xFF0000u, 0x000000u, 0xFF0000u, 0x00FF00u, 0xFF0000u));
  EXPECT_EQ(pixGetDepth(DecodeBmp(file)->pix.get()), 4);
}

TEST(BmpFile, OneBitWithBlackAndWhiteIsBilevel) {
  auto const picture =
      DecodeBmp(Bmp(Form(1, 0, {0x000000, 0xFFFFFF}), {0x40, 0, 0, 0, 0xA0, 0, 0, 0}));
  ASSERT_TRUE(picture);
  EXPECT_EQ(PackedDepth(picture->pix.get()), 1);
}

TEST(BmpFile, OldestHeaderHasPalettesOfThreeBytes) {
  std::vector<BYTE> const file = {'B', 'M', 36, 0, 0, 0, 0, 0, 0, 0, 32,  0,   0, 0, 12,   0, 0, 0,
                                  2,   0,   1,  0, 1, 0, 1, 0, 0, 0, 255, 255, 0, 0, 0x40, 0, 0, 0};
  EXPECT_THAT(Colours(file), ElementsAre(0xFF0000u, 0x0000FFu));
}

BmpForm Runs(DWORD bits) {
  BmpForm form = Form(bits, bits == 8 ? 1 : 2, {0x000000, 0xFF0000, 0x00FF00, 0x0000FF});
  form.colours = 4;
  return form;
}

TEST(BmpFile, RunsOfBytesAreExpanded) {
  // A run of 3; the end of the row; three literals and a byte that pads them; the end.
  std::vector<BYTE> const rows = {3, 1, 0, 0, 0, 3, 1, 2, 3, 0, 0, 1};
  EXPECT_THAT(Colours(Bmp(Runs(8), rows)),
              ElementsAre(0xFF0000u, 0x00FF00u, 0x0000FFu, 0xFF0000u, 0xFF0000u, 0xFF0000u));
}

TEST(BmpFile, RunsOfNibblesTakeTurns) {
  std::vector<BYTE> const rows = {3, 0x12, 0, 0, 0, 3, 0x12, 0x30, 0, 1};
  EXPECT_THAT(Colours(Bmp(Runs(4), rows)),
              ElementsAre(0xFF0000u, 0x00FF00u, 0x0000FFu, 0xFF0000u, 0x00FF00u, 0xFF0000u));
}

TEST(BmpFile, SkippedPixelsHaveTheFirstColour) {
  EXPECT_THAT(Colours(Bmp(Runs(8), {0, 2, 1, 1, 1, 2, 0, 1})),
              ElementsAre(0u, 0x00FF00u, 0u, 0u, 0u, 0u));
}

TEST(BmpFile, RunsBeyondThePictureAreDropped) {
  EXPECT_THAT(Colours(Bmp(Runs(8), {255, 1, 0, 0, 255, 2, 0, 0, 9, 3, 0, 1})),
              ElementsAre(0x00FF00u, 0x00FF00u, 0x00FF00u, 0xFF0000u, 0xFF0000u, 0xFF0000u));
}

TEST(BmpFile, RunsThatEndEarlyAreDamage) {
  EXPECT_NE(DecodeBmp(Bmp(Runs(8), {3, 1, 0, 0, 2, 1}))->damage, "");
  EXPECT_EQ(DecodeBmp(Bmp(Runs(8), {3, 1, 0, 0, 3, 1}))->damage, "");
  EXPECT_NE(DecodeBmp(Bmp(Runs(8), {9, 1, 0, 0, 3, 1}))->damage, "");
}

TEST(BmpFile, RowsThatEndEarlyAreDamage) {
  std::vector<BYTE> file = Bmp(Form(32, 0), Rows32(0));
  file.pop_back();
  EXPECT_EQ(DecodeBmp(file)->damage, "the data end in row 2 of 2");
}

TEST(BmpFile, CutFilesAreRefusedOrDamaged) {
  std::vector<BYTE> const file = Bmp(Runs(8), {3, 1, 0, 0, 3, 1});
  for (size_t size = 0; size < file.size(); ++size) {
    auto const picture = DecodeBmp(std::span(file).first(size));
    EXPECT_TRUE(!picture || !picture->damage.empty()) << size;
  }
}

TEST(BmpFile, UnknownKindsAreRefused) {
  EXPECT_FALSE(DecodeBmp(Bmp(Form(2, 0), Rows32(0))));
  EXPECT_FALSE(DecodeBmp(Bmp(Form(24, 4), Rows32(0))));
  EXPECT_FALSE(DecodeBmp(Bmp(Form(24, 3), Rows32(0))));
}

TEST(BmpFile, ImpossibleSizesAreRefused) {
  for (DWORD const side : {0u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    BmpForm form = Form(32, 0);
    form.width = side;
    EXPECT_FALSE(DecodeBmp(Bmp(form, Rows32(0)))) << side;
    form.width = 3;
    form.height = side == 0xFFFFFFFF ? 0x80000001 : side;
    EXPECT_FALSE(DecodeBmp(Bmp(form, Rows32(0)))) << side;
  }
}

}  // namespace
}  // namespace sorrelin::tool

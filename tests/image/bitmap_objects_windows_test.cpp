// Bitmap and palette objects, and drawing on bitmaps.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/image/bitmap_objects_windows.h>
#include <sorrelin/image/toolbox/color_table.h>
#include <sorrelin/image/toolbox/dib_image.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <tests/image/toolbox_pictures.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

using sorrelin::BitmapFromDIB;
using sorrelin::CopyPaletteToDIB;
using sorrelin::CreateMonoPalette;
using sorrelin::CreatePaletteFromDIB;
using sorrelin::DIBFromBitmap;
using sorrelin::DibImage;
using test::Block;
using test::Bytes;
using testing::Each;
using testing::ElementsAre;

// Deletes an object of the system.
template <typename Handle>
class Object {
 public:
  explicit Object(Handle handle) : handle_(handle) {}
  ~Object() {
    if (handle_ != nullptr) DeleteObject(handle_);
  }
  Object(Object const&) = delete;
  Object& operator=(Object const&) = delete;
  Handle get() const { return handle_; }

 private:
  Handle handle_;
};

using Bitmap = Object<HBITMAP>;
using Palette = Object<HPALETTE>;

// The entries of a palette as 0xRRGGBBFF, where FF are the flags.
std::vector<DWORD> Entries(HPALETTE palette) {
  WORD count = 0;
  GetObjectW(palette, sizeof count, &count);
  std::vector<PALETTEENTRY> entries(count);
  GetPaletteEntries(palette, 0, count, entries.data());
  std::vector<DWORD> colors;
  for (PALETTEENTRY const& e : entries) {
    colors.push_back(DWORD{e.peRed} << 24 | DWORD{e.peGreen} << 16 | DWORD{e.peBlue} << 8 |
                     e.peFlags);
  }
  return colors;
}

// Header and table of a bitmap.
Bytes Head(WORD bits, DWORD colors_used, Bytes const& table) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = header.biHeight = header.biPlanes = 1;
  header.biBitCount = bits;
  header.biClrUsed = colors_used;
  Bytes bytes(sizeof header + table.size());
  std::memcpy(bytes.data(), &header, sizeof header);
  std::copy(table.begin(), table.end(), bytes.begin() + sizeof header);
  return bytes;
}

// The bytes of a bitmap's block from `from` to `to`.
Bytes RowBytes(Block const& dib, ptrdiff_t from, ptrdiff_t to) {
  Bytes const bytes = dib.Content();
  return Bytes(bytes.begin() + from, bytes.begin() + to);
}

TEST(CreatePaletteFromDIB, HasTheColoursOfTheTable) {
  Palette const palette(CreatePaletteFromDIB(Head(8, 2, {1, 2, 3, 4, 5, 6, 7, 8})));
  EXPECT_THAT(Entries(palette.get()), ElementsAre(0x03020100u, 0x07060500u));
}

TEST(CreatePaletteFromDIB, SpreadsColoursFor24Bits) {
  Palette const palette(CreatePaletteFromDIB(Head(24, 0, {})));
  std::vector<DWORD> const colors = Entries(palette.get());
  ASSERT_EQ(colors.size(), 256u);
  EXPECT_EQ(colors[1], 0x20000000u);
  EXPECT_EQ(colors[8], 0x00200000u);
  EXPECT_EQ(colors[64], 0x00004000u);
  EXPECT_EQ(colors[254], 0xC0E0C000u);
  EXPECT_EQ(colors[255], 0xFFFFFF00u);
}

TEST(CreatePaletteFromDIB, RefusesOtherHeadersAndDepths) {
  Bytes longer = Head(8, 2, {});
  longer[0] = 108;
  EXPECT_EQ(CreatePaletteFromDIB(longer), nullptr);
  EXPECT_EQ(CreatePaletteFromDIB(Head(16, 0, {})), nullptr);
  EXPECT_EQ(CreatePaletteFromDIB(Head(8, 0xFFFFFFFF, {})), nullptr);
}

TEST(CreateMonoPalette, IsWhiteAndBlack) {
  Palette const palette(CreateMonoPalette());
  EXPECT_THAT(Entries(palette.get()), ElementsAre(0xFFFFFF00u, 0x00000000u));
}

TEST(GetSystemPaletteOf, HasAtMost256Entries) {
  HDC const context = CreateCompatibleDC(nullptr);
  Palette const palette(sorrelin::GetSystemPaletteOf(context));
  DeleteDC(context);
  EXPECT_LE(Entries(palette.get()).size(), 256u);
}

TEST(CopyPaletteToDIB, CopiesWhatFits) {
  Palette const palette(CreateMonoPalette());
  Bytes block = Head(8, 3, Bytes(12, 9));
  CopyPaletteToDIB(palette.get(), block);
  EXPECT_THAT(Bytes(block.begin() + 40, block.end()),
              ElementsAre(255, 255, 255, 0, 0, 0, 0, 0, 9, 9, 9, 9));
}

TEST(CopyPaletteToDIB, WithoutAFittingPaletteTheColoursAreStandard) {
  Palette const palette(CreatePaletteFromDIB(Head(24, 0, {})));
  for (HPALETTE const handle : {palette.get(), HPALETTE{nullptr}}) {
    Bytes block = Head(1, 0, Bytes(8, 9));
    CopyPaletteToDIB(handle, block);
    EXPECT_THAT(Bytes(block.begin() + 40, block.end()), ElementsAre(0, 0, 0, 0, 255, 255, 255, 0));
  }
}

TEST(BitmapFromDIB, AndBackKeepsTheColours) {
  Block const dib = test::MakePicture(
      5, 3, 24, [](LONG x, LONG y) { return static_cast<DWORD>(0x102030 * x + 0x010203 * y); });
  Bitmap const bitmap(BitmapFromDIB(dib));
  ASSERT_NE(bitmap.get(), nullptr);
  Block const back(DIBFromBitmap(bitmap.get(), nullptr));
  Bytes const bytes = back.Content();
  // The section may be deeper than the bitmap, which comes back as 24 bits all the same.
  EXPECT_EQ(test::HeaderOf(bytes).biBitCount, 24);
  EXPECT_EQ(bytes.size(), 3u * 16 + 50);
  EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.begin() + 88), RowBytes(dib, 40, 88));
}

TEST(DIBFromBitmap, BilevelHasItsTable) {
  Block const dib = test::MakePicture(9, 2, 1, [](LONG x, LONG y) { return DWORD((x + y) % 2); });
  Bitmap const bitmap(BitmapFromDIB(dib));
  Block const back(DIBFromBitmap(bitmap.get(), nullptr));
  Bytes const bytes = back.Content();
  ASSERT_EQ(bytes.size(), 2u * 4 + 8 + 50);
  EXPECT_EQ(test::HeaderOf(bytes).biClrUsed, 2u);
  EXPECT_EQ(test::HeaderOf(bytes).biClrImportant, 2u);
  EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.begin() + 56), RowBytes(dib, 40, 56));
}

TEST(DIBFromBitmap, IndexedKeepsItsNumberOfColours) {
  Block const dib = test::MakePicture(5, 2, 8, [](LONG x, LONG y) { return DWORD(50 * x + y); });
  Bitmap const bitmap(BitmapFromDIB(dib));
  Block const back(DIBFromBitmap(bitmap.get(), nullptr));
  ASSERT_EQ(GlobalSize(back), 2u * 8 + 1024 + 50);
  EXPECT_EQ(test::HeaderOf(back.Content()).biClrUsed, 256u);
}

TEST(DIBFromBitmap, RefusesWhatIsNoBitmap) { EXPECT_EQ(DIBFromBitmap(nullptr, nullptr), nullptr); }

TEST(BitmapFromDIB, RowsThatTheBlockLacksAreBlack) {
  Bytes bytes = test::MakePicture(2, 2, 24, [](LONG, LONG) { return 0xFFFFFFu; }).Content();
  bytes.resize(40 + 3);
  Bitmap const bitmap(BitmapFromDIB(test::MakeBlock(bytes)));
  Block const back(DIBFromBitmap(bitmap.get(), nullptr));
  Bytes const content = back.Content();
  EXPECT_THAT(Bytes(content.begin() + 40, content.begin() + 43), Each(255));
  EXPECT_THAT(Bytes(content.begin() + 43, content.begin() + 46), Each(0));
  EXPECT_THAT(Bytes(content.begin() + 48, content.begin() + 54), Each(0));
}

TEST(BitmapFromDIB, RefusesWhatItCannotTrust) {
  EXPECT_EQ(BitmapFromDIB(nullptr), nullptr);
  for (size_t const offset : {0u, 16u}) {  // size of the header, compression
    Bytes bytes = test::ScrambledPicture(2, 2, 24);
    bytes[offset] = 3;
    EXPECT_EQ(BitmapFromDIB(test::MakeBlock(bytes)), nullptr) << offset;
  }
}

TEST(DibImageDrawing, CanvasStartsWhiteAndIsCopiedBack) {
  DibImage image(3, 2, 100, 100, 24, false);
  HDC const context = static_cast<HDC>(image.GetDrawingDC());
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(image.GetDrawingDC(), context);
  EXPECT_NE(image.pHeader, nullptr);
  SetPixel(context, 1, 0, RGB(10, 20, 30));
  image.ReleaseDrawingDC();
  EXPECT_EQ(image.hDC, nullptr);
  EXPECT_EQ(image.pHeader, nullptr);
  Block const dib(image.Detach());
  Bytes const bytes = dib.Content();
  EXPECT_THAT(Bytes(bytes.begin() + 40, bytes.begin() + 49), Each(255));
  EXPECT_THAT(Bytes(bytes.begin() + 52, bytes.begin() + 61),
              ElementsAre(255, 255, 255, 30, 20, 10, 255, 255, 255));
}

TEST(DibImageDrawing, OtherDepthsHaveNoContext) {
  for (int const bits : {1, 8}) {
    DibImage image(3, 2, 100, 100, bits, false);
    EXPECT_EQ(image.GetDrawingDC(), nullptr) << bits;
  }
}

TEST(DibImageDrawing, DestructorEndsTheContext) {
  DibImage image(3, 2, 100, 100, 24, false);
  HDC const context = static_cast<HDC>(image.GetDrawingDC());
  ASSERT_NE(context, nullptr);
  image.ReleaseDrawingDC();
  EXPECT_EQ(GetObjectType(context), 0u);
}

}  // namespace

// Decoded pictures as packed bitmaps.
#include "tools/formats/picture/picture.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/dib.h"

namespace sorrelin::tool {
namespace {

test::Bytes Packed(Pix* pix, Resolution dpi = {}) {
  OwnedBlock block = PackedDib(pix, dpi);
  return test::Block(block.Release()).Content();
}

BITMAPINFOHEADER HeaderOf(test::Bytes const& dib) {
  BITMAPINFOHEADER header;
  std::memcpy(&header, dib.data(), sizeof header);
  return header;
}

test::Bytes Tail(test::Bytes const& dib, size_t from) {
  return {dib.begin() + static_cast<ptrdiff_t>(from), dib.end()};
}

TEST(PackedDib, BilevelHasBlackFirstAndRowsFromTheLowest) {
  PixPtr const pix(pixCreate(9, 2, 1));
  pixSetPixel(pix.get(), 0, 0, 1);
  pixSetPixel(pix.get(), 8, 1, 1);
  test::Bytes const dib = Packed(pix.get());
  EXPECT_EQ(HeaderOf(dib).biBitCount, 1);
  EXPECT_EQ(Tail(dib, 40), (test::Bytes{0, 0, 0, 0, 255, 255, 255, 0,  //
                                        0xFF, 0x00, 0, 0,              //
                                        0x7F, 0x80, 0, 0}));
}

TEST(PackedDib, BilevelPaletteOfWhiteAndBlackInEitherOrder) {
  for (int const first : {0, 255}) {
    PixPtr const pix(pixCreate(8, 1, 1));
    PixColormap* const map = pixcmapCreate(1);
    pixcmapAddColor(map, first, first, first);
    pixcmapAddColor(map, 255 - first, 255 - first, 255 - first);
    pixSetColormap(pix.get(), map);
    pixSetPixel(pix.get(), 0, 0, 1);
    EXPECT_EQ(PackedDepth(pix.get()), 1);
    EXPECT_EQ(Packed(pix.get())[48], first == 0 ? 0x80 : 0x7F);
  }
}

TEST(PackedDib, BilevelPaletteOfColoursHasEightBits) {
  PixPtr const pix(pixCreate(3, 1, 1));
  PixColormap* const map = pixcmapCreate(1);
  pixcmapAddColor(map, 1, 2, 3);
  pixcmapAddColor(map, 4, 5, 6);
  pixSetColormap(pix.get(), map);
  pixSetPixel(pix.get(), 1, 0, 1);
  test::Bytes const dib = Packed(pix.get());
  EXPECT_EQ(HeaderOf(dib).biBitCount, 8);
  EXPECT_EQ((test::Bytes{dib.begin() + 40, dib.begin() + 48}),
            (test::Bytes{3, 2, 1, 0, 6, 5, 4, 0}));
  EXPECT_EQ(Tail(dib, 40 + 1024), (test::Bytes{0, 1, 0, 0}));
}

TEST(PackedDib, ShallowGreysGetTheirTonesFromThePalette) {
  PixPtr const pix(pixCreate(4, 1, 2));
  for (int x = 0; x < 4; ++x) pixSetPixel(pix.get(), x, 0, static_cast<l_uint32>(x));
  test::Bytes const dib = Packed(pix.get());
  EXPECT_EQ((test::Bytes{dib.begin() + 40, dib.begin() + 56}),
            (test::Bytes{0, 0, 0, 0, 85, 85, 85, 0, 170, 170, 170, 0, 255, 255, 255, 0}));
  EXPECT_EQ(Tail(dib, 40 + 1024), (test::Bytes{0, 1, 2, 3}));
}

TEST(PackedDib, SixteenBitsKeepTheHighByte) {
  PixPtr const pix(pixCreate(2, 1, 16));
  pixSetPixel(pix.get(), 0, 0, 0x12FF);
  pixSetPixel(pix.get(), 1, 0, 0xFE00);
  EXPECT_EQ(Tail(Packed(pix.get()), 40 + 1024), (test::Bytes{0x12, 0xFE, 0, 0}));
}

TEST(PackedDib, ColourIsBlueGreenRed) {
  PixPtr const pix(pixCreate(1, 2, 32));
  pixSetRGBPixel(pix.get(), 0, 0, 1, 2, 3);
  pixSetRGBPixel(pix.get(), 0, 1, 4, 5, 6);
  EXPECT_EQ(Tail(Packed(pix.get()), 40), (test::Bytes{6, 5, 4, 0, 3, 2, 1, 0}));
}

TEST(PackedDib, ResolutionIsInPixelsPerMetreByAxis) {
  PixPtr const pix(pixCreate(1, 1, 8));
  BITMAPINFOHEADER const header = HeaderOf(Packed(pix.get(), {300, 72}));
  EXPECT_EQ(header.biXPelsPerMeter, 11811);
  EXPECT_EQ(header.biYPelsPerMeter, 2835);
}

TEST(PackedDib, TransparentPaletteEntriesAreLaidOnWhite) {
  PixPtr const pix(pixCreate(1, 1, 8));
  PixColormap* const map = pixcmapCreate(8);
  pixcmapAddRGBA(map, 0, 100, 200, 128);
  pixSetColormap(pix.get(), map);
  test::Bytes const dib = Packed(pix.get());
  // (v * 128 + 255 * 127 + 127) / 255
  EXPECT_EQ((test::Bytes{dib.begin() + 40, dib.begin() + 43}), (test::Bytes{227, 177, 127}));
}

TEST(BlendOnWhite, PlainAndScaledColoursDiffer) {
  for (bool const scaled : {false, true}) {
    PixPtr const pix(pixCreate(2, 1, 32));
    pixSetSpp(pix.get(), 4);
    pixSetPixel(pix.get(), 0, 0, 0x20406080);
    pixSetPixel(pix.get(), 1, 0, 0x00000000);
    BlendOnWhite(pix.get(), scaled);
    l_uint32 value = 0;
    pixGetPixel(pix.get(), 0, 0, &value);
    // Scaled: v + 255 - 128; plain: (v * 128 + 255 * 127 + 127) / 255.
    EXPECT_EQ(value >> 8, scaled ? 0x9FBFDFu : 0x8F9FAFu);
    pixGetPixel(pix.get(), 1, 0, &value);
    EXPECT_EQ(value >> 8, 0xFFFFFFu);
    EXPECT_EQ(pixGetSpp(pix.get()), 3);
  }
}

TEST(WithoutPalette, GreyPaletteBecomesTonesAndColourPaletteColours) {
  for (int const blue : {50, 60}) {
    PixPtr const pix(pixCreate(2, 1, 4));
    PixColormap* const map = pixcmapCreate(4);
    pixcmapAddColor(map, 200, 200, 200);
    pixcmapAddColor(map, 50, 50, blue);
    pixSetColormap(pix.get(), map);
    pixSetPixel(pix.get(), 1, 0, 1);
    PixPtr const plain = WithoutPalette(pix.get());
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(pixGetColormap(plain.get()), nullptr);
    EXPECT_EQ(pixGetDepth(plain.get()), blue == 50 ? 8 : 32);
    l_uint32 value = 0;
    pixGetPixel(plain.get(), 1, 0, &value);
    EXPECT_EQ(blue == 50 ? value : value >> 8, blue == 50 ? 50u : 0x32323Cu);
  }
}

TEST(WithoutPalette, BilevelPaletteBecomesTones) {
  PixPtr const pix(pixCreate(2, 1, 1));
  PixColormap* const map = pixcmapCreate(1);
  pixcmapAddColor(map, 40, 40, 40);
  pixcmapAddColor(map, 210, 210, 210);
  pixSetColormap(pix.get(), map);
  pixSetPixel(pix.get(), 1, 0, 1);
  PixPtr const plain = WithoutPalette(pix.get());
  ASSERT_NE(plain, nullptr);
  l_uint32 first = 0, second = 0;
  pixGetPixel(plain.get(), 0, 0, &first);
  pixGetPixel(plain.get(), 1, 0, &second);
  EXPECT_EQ(pixGetDepth(plain.get()), 8);
  EXPECT_EQ(first, 40u);
  EXPECT_EQ(second, 210u);
}

TEST(WithoutPalette, ShallowGreysBecomeTones) {
  PixPtr const pix(pixCreate(4, 1, 2));
  pixSetPixel(pix.get(), 3, 0, 2);
  PixPtr const plain = WithoutPalette(pix.get());
  ASSERT_NE(plain, nullptr);
  l_uint32 value = 0;
  pixGetPixel(plain.get(), 3, 0, &value);
  EXPECT_EQ(value, 170u);
}

}  // namespace
}  // namespace sorrelin::tool

// Samples of Leptonica's pictures, and of pixels with alpha.
#include "tools/formats/picture/samples.h"

#include <gtest/gtest.h>

#include <new>

#include "tools/extract/page/picture_form.h"
#include "tools/formats/picture/blend.h"
#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {
namespace {

PixPtr Made(int width, int depth, std::vector<l_uint32> const& values) {
  PixPtr pix(pixCreate(width, static_cast<int>(values.size()) / width, depth));
  for (int i = 0; i < static_cast<int>(values.size()); ++i) {
    pixSetPixel(pix.get(), i % width, i / width, values[static_cast<size_t>(i)]);
  }
  return pix;
}

// 65,500 rows of 262,000 bytes; 2^31 - 1 pixels of 64 bits, which are 2^37 - 64.
TEST(Samples, SizesBeyondAddressesAreShortMemory) {
  Samples inks;
  inks.width = inks.height = 65500;
  inks.colours = ImageColours::kCmyk;
  PictureForm wide;
  wide.width = 0x7FFFFFFF;
  wide.depth = 64;
  EXPECT_EQ(inks.RowBytes(), 262000u);
  if constexpr (sizeof(size_t) == 4) {
    EXPECT_THROW(inks.Bytes(), std::bad_alloc);
    EXPECT_THROW(wide.RowBytes(), std::bad_alloc);
  } else {
    EXPECT_EQ(inks.Bytes(), uint64_t{17161000000});
    EXPECT_EQ(wide.RowBytes(), uint64_t{17179869176});
  }
}

// 2^29 + 1 pixels of 8 bits have 2^32 + 8.
TEST(Samples, RowOfMoreBitsThan32CountHasItsBytes) {
  PictureForm form;
  form.width = 0x20000001;
  form.depth = 8;
  EXPECT_EQ(form.RowBytes(), 0x20000001u);
}

TEST(Samples, InkOfBilevelPicturesIsZero) {
  Samples const samples = SamplesOf(Made(10, 1, {1, 0, 0, 0, 0, 0, 0, 1, 1, 0}).get());
  EXPECT_EQ(samples.bits, 1);
  EXPECT_EQ(samples.colours, ImageColours::kGrey);
  EXPECT_EQ(samples.bytes, (std::vector<BYTE>{0x7E, 0x40}));
}

TEST(Samples, GreysKeepTheirDepth) {
  EXPECT_EQ(SamplesOf(Made(3, 2, {1, 2, 3}).get()).bytes, (std::vector<BYTE>{0x6C}));
  EXPECT_EQ(SamplesOf(Made(3, 4, {1, 2, 15}).get()).bytes, (std::vector<BYTE>{0x12, 0xF0}));
  EXPECT_EQ(SamplesOf(Made(2, 8, {1, 200}).get()).bytes, (std::vector<BYTE>{1, 200}));
  Samples const deep = SamplesOf(Made(2, 16, {0x0102, 0xFFFE}).get());
  EXPECT_EQ(deep.bits, 16);
  EXPECT_EQ(deep.bytes, (std::vector<BYTE>{1, 2, 0xFF, 0xFE}));
}

TEST(Samples, ColoursAreRedGreenBlue) {
  Samples const samples = SamplesOf(Made(2, 32, {0x01020300, 0xFFFEFD00}).get());
  EXPECT_EQ(samples.colours, ImageColours::kRgb);
  EXPECT_EQ(samples.bytes, (std::vector<BYTE>{1, 2, 3, 0xFF, 0xFE, 0xFD}));
}

TEST(Samples, PalettesKeepTheirDepthAndLieOnWhite) {
  PixPtr const pix = Made(4, 2, {0, 1, 2, 1});
  PixColormap* const map = pixcmapCreate(2);
  pixcmapAddColor(map, 10, 20, 30);
  pixcmapAddRGBA(map, 0, 0, 0, 0);
  pixSetColormap(pix.get(), map);
  Samples const samples = SamplesOf(pix.get());
  EXPECT_EQ(samples.Components(), 1);
  EXPECT_EQ(samples.bytes, (std::vector<BYTE>{0x19}));
  EXPECT_EQ(samples.palette, (std::vector<BYTE>{10, 20, 30, 255, 255, 255, 0, 0, 0, 0, 0, 0}));
}

TEST(Samples, PaletteOfBlackAndWhiteIsGrey) {
  PixPtr const pix = Made(8, 1, {0, 1, 1, 1, 1, 1, 1, 1});
  PixColormap* const map = pixcmapCreate(1);
  pixcmapAddColor(map, 0, 0, 0);
  pixcmapAddColor(map, 255, 255, 255);
  pixSetColormap(pix.get(), map);
  Samples const samples = SamplesOf(pix.get());
  EXPECT_TRUE(samples.palette.empty());
  EXPECT_EQ(samples.bytes, (std::vector<BYTE>{0x7F}));
}

std::vector<BYTE> Native(std::vector<uint16_t> const& values) {
  BYTE const* const bytes = reinterpret_cast<BYTE const*>(values.data());
  return {bytes, bytes + 2 * values.size()};
}

// 0x4000 at half opacity over white: (0x4000 + 0xFFFF) / 2.
TEST(Samples, StraightAlphaOf16BitsIsLaidOnWhite) {
  DeepPixels form;
  form.samples = 2;
  form.alpha = Alpha::kStraight;
  auto const samples = SamplesOf(form, 3, 1, Native({0x4000, 0x8000, 0x1234, 0, 0x1234, 0xFFFF}));
  EXPECT_EQ(samples.bits, 16);
  EXPECT_EQ(samples.bytes, (std::vector<BYTE>{0x9F, 0xFF, 0xFF, 0xFF, 0x12, 0x34}));
}

TEST(Samples, PremultipliedAlphaIsLaidOnWhite) {
  DeepPixels form;
  form.samples = 2;
  form.sample_bytes = 1;
  form.alpha = Alpha::kPremultiplied;
  std::vector<BYTE> const pixels = {0x20, 0x80, 0x00, 0x00, 0x77, 0xFF};
  EXPECT_EQ(SamplesOf(form, 3, 1, pixels).bytes, (std::vector<BYTE>{0x9F, 0xFF, 0x77}));
}

// White paper has no ink.
TEST(Samples, TransparentInksFade) {
  DeepPixels form;
  form.colours = ImageColours::kCmyk;
  form.samples = 5;
  form.sample_bytes = 1;
  form.alpha = Alpha::kStraight;
  std::vector<BYTE> const pixels = {255, 100, 0, 51, 51};
  EXPECT_EQ(SamplesOf(form, 1, 1, pixels).bytes, (std::vector<BYTE>{51, 20, 0, 10}));
}

TEST(Samples, InvertedGreysAreTurnedAround) {
  DeepPixels form;
  form.inverted = true;
  EXPECT_EQ(SamplesOf(form, 1, 1, Native({0x0102})).bytes, (std::vector<BYTE>{0xFE, 0xFD}));
}

}  // namespace
}  // namespace sorrelin::tool

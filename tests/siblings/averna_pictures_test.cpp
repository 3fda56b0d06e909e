// Bitmaps as the pictures that the OCR engine reads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <siblings/averna/bitmap_pix.h>
#include <tests/support/dib.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

namespace {

using sorrelin::averna::PixFromDib;
using sorrelin::averna::PixPtr;
using testing::ElementsAre;

using Pixels = std::vector<l_uint32>;

Pixels PixelsOf(PixPtr const& pix) {
  Pixels pixels;
  for (l_int32 y = 0; y < pixGetHeight(pix.get()); ++y) {
    for (l_int32 x = 0; x < pixGetWidth(pix.get()); ++x) {
      l_uint32 value = 0;
      pixGetPixel(pix.get(), x, y, &value);
      pixels.push_back(value);
    }
  }
  return pixels;
}

test::DibSpec Spec(LONG width, LONG height, WORD bits) {
  test::DibSpec spec;
  spec.width = width;
  spec.height = height;
  spec.bits = bits;
  return spec;
}

// A bitmap of 3 x 2 pixels that is sound until `spoil` has had its header.
test::Block Spoiled(WORD bits, std::function<void(BITMAPINFOHEADER&)> const& spoil) {
  test::Block dib = test::MakeDib(Spec(3, 2, bits), [](LONG, LONG) { return 0u; });
  spoil(*static_cast<BITMAPINFOHEADER*>(GlobalLock(dib)));
  GlobalUnlock(dib);
  return dib;
}

TEST(PixFromDib, BilevelSetsTheDarkerColour) {
  test::DibSpec spec = Spec(3, 2, 1);
  auto const pixel = [](LONG x, LONG y) { return x == 0 && y == 0 ? 1u : 0u; };
  EXPECT_THAT(PixelsOf(PixFromDib(test::MakeDib(spec, pixel))), ElementsAre(0, 1, 1, 1, 1, 1));
  spec.palette = {test::kWhite, test::kBlack};
  PixPtr const pix = PixFromDib(test::MakeDib(spec, pixel));
  EXPECT_EQ(pixGetDepth(pix.get()), 1);
  EXPECT_THAT(PixelsOf(pix), ElementsAre(1, 0, 0, 0, 0, 0));
}

TEST(PixFromDib, BilevelWidthsToSeventy) {
  for (LONG width = 1; width <= 70; ++width) {
    auto const pixel = [](LONG x, LONG y) { return static_cast<DWORD>((x * 7 + y * 3) % 5 == 0); };
    Pixels expected;
    for (LONG y = 0; y < 2; ++y) {
      for (LONG x = 0; x < width; ++x) expected.push_back(1 - pixel(x, y));
    }
    EXPECT_EQ(PixelsOf(PixFromDib(test::MakeDib(Spec(width, 2, 1), pixel))), expected) << width;
  }
}

TEST(PixFromDib, GreyTableMakesAGreyPicture) {
  test::Block const dib =
      test::MakeDib(Spec(3, 2, 8), [](LONG x, LONG y) { return static_cast<DWORD>(10 * y + x); });
  PixPtr const pix = PixFromDib(dib);
  EXPECT_EQ(pixGetDepth(pix.get()), 8);
  EXPECT_THAT(PixelsOf(pix), ElementsAre(0, 1, 2, 10, 11, 12));
}

TEST(PixFromDib, ColorTableMakesAColorPicture) {
  test::DibSpec spec = Spec(2, 1, 8);
  spec.palette = {{3, 2, 1, 0}, {6, 5, 4, 0}};
  spec.colors_used = 2;
  PixPtr const pix = PixFromDib(test::MakeDib(spec, [](LONG x, LONG) { return DWORD(x); }));
  EXPECT_EQ(pixGetDepth(pix.get()), 32);
  EXPECT_THAT(PixelsOf(pix), ElementsAre(0x01020300, 0x04050600));
}

TEST(PixFromDib, IndexBehindTheTableIsBlack) {
  test::DibSpec spec = Spec(1, 1, 8);
  spec.palette = {{9, 9, 9, 0}};
  spec.colors_used = 1;
  EXPECT_THAT(PixelsOf(PixFromDib(test::MakeDib(spec, [](LONG, LONG) { return 7u; }))),
              ElementsAre(0));
}

TEST(PixFromDib, TrueColor) {
  PixPtr const pix = PixFromDib(test::MakeDib(
      Spec(3, 2, 24), [](LONG x, LONG y) { return y == 0 && x == 2 ? 0x102030u : 0xA0B0C0u; }));
  EXPECT_EQ(pixGetDepth(pix.get()), 32);
  EXPECT_THAT(PixelsOf(pix),
              ElementsAre(0xA0B0C000, 0xA0B0C000, 0x10203000, 0xA0B0C000, 0xA0B0C000, 0xA0B0C000));
}

TEST(PixFromDib, NegativeHeightMeansTopRowFirst) {
  test::Block const dib =
      test::MakeDib(Spec(1, 2, 8), [](LONG, LONG y) { return y == 0 ? 50u : 60u; });
  static_cast<BITMAPINFOHEADER*>(GlobalLock(dib))->biHeight = -2;
  GlobalUnlock(dib);
  EXPECT_THAT(PixelsOf(PixFromDib(dib)), ElementsAre(60, 50));
}

TEST(PixFromDib, ResolutionIsInDotsPerInch) {
  struct {
    LONG x_per_metre, y_per_metre;
    l_int32 x, y;
  } const kRows[] = {{11811, 3937, 300, 100}, {0, 2835, 72, 72}, {2835, 0, 72, 72}, {0, 0, 0, 0},
                     {-5, -5, 0, 0},          {-5, 2835, 72, 72}};
  for (auto const& row : kRows) {
    test::DibSpec spec = Spec(1, 1, 8);
    spec.x_per_metre = row.x_per_metre;
    spec.y_per_metre = row.y_per_metre;
    PixPtr const pix = PixFromDib(test::MakeDib(spec, [](LONG, LONG) { return 0u; }));
    EXPECT_EQ(pixGetXRes(pix.get()), row.x);
    EXPECT_EQ(pixGetYRes(pix.get()), row.y);
  }
}

TEST(PixFromDib, HeadersThatAreNotServedAreRefused) {
  constexpr LONG kMin = std::numeric_limits<LONG>::min();
  for (WORD const bits : {WORD{1}, WORD{8}, WORD{24}}) {
    using Header = BITMAPINFOHEADER;
    EXPECT_NE(PixFromDib(Spoiled(bits, [](Header&) {})), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biSize = 12; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biCompression = 1; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biBitCount = 4; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biWidth = 0; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biWidth = -3; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biWidth = 32768; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biHeight = 0; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biHeight = kMin; })), nullptr);
  }
}

TEST(PixFromDib, BlocksThatAreTooShortAreRefused) {
  for (WORD const bits : {WORD{1}, WORD{8}, WORD{24}}) {
    using Header = BITMAPINFOHEADER;
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biHeight = 3; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biWidth = 33; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biSize = 41; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biSize = 0xFFFFFFFF; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biClrUsed = 257; })), nullptr);
    // Times 4 is 0 in 32 bits.
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biClrUsed = 0x40000000; })), nullptr);
    EXPECT_EQ(PixFromDib(Spoiled(bits, [](Header& h) { h.biClrUsed = 0xFFFFFFFF; })), nullptr);
  }
}

TEST(PixFromDib, HandlesThatAreNoneAreRefused) {
  EXPECT_EQ(PixFromDib(nullptr), nullptr);
  EXPECT_EQ(PixFromDib(INVALID_HANDLE_VALUE), nullptr);
  EXPECT_EQ(PixFromDib(test::Block(GlobalAlloc(GHND, 39))), nullptr);
}

}  // namespace

// Straightening, cleaning, and the look for ink.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tools/make/pages/scan_cleaning.h"

namespace sorrelin::tool {
namespace {

constexpr int kWidth = 1200;
constexpr int kHeight = 800;
constexpr int kDpi = 150;

Picture MakePicture(PixPtr pix) {
  Picture picture;
  picture.pix = std::move(pix);
  picture.dpi = {kDpi, kDpi};
  return picture;
}

// Lines of dashes on paper of tone 240, as words are seen from far; 8 bits.
PixPtr Lines() {
  PixPtr pix(pixCreate(kWidth, kHeight, 8));
  pixSetAllArbitrary(pix.get(), 240);
  for (int y = 100; y < 700; y += 30) {
    for (int x = 100; x < 1100; x += 60) {
      for (int i = 0; i < 45 * 12; ++i) pixSetPixel(pix.get(), x + i % 45, y + i / 45, 20);
    }
  }
  return pix;
}

double SkewOf(Pix* pix) {
  PixPtr const bits(pixConvertTo1(pix, 128));
  l_float32 angle = 0, confidence = 0;
  pixFindSkew(bits.get(), &angle, &confidence);
  return static_cast<double>(angle);
}

PixPtr Tilted() {
  return PixPtr(pixRotate(Lines().get(), static_cast<l_float32>(2 * std::numbers::pi / 180),
                          L_ROTATE_AREA_MAP, L_BRING_IN_WHITE, 0, 0));
}

TEST(ScanCleaning, TiltedLinesAreStraightened) {
  Picture picture = MakePicture(Tilted());
  ASSERT_GT(std::abs(SkewOf(picture.pix.get())), 1.5);
  ASSERT_TRUE(CleanScan({.deskew = true}, picture));
  EXPECT_LT(std::abs(SkewOf(picture.pix.get())), 0.2);
  EXPECT_TRUE(picture.changes.Has(Change::kStraightened));
}

TEST(ScanCleaning, StraightLinesStayAsTheyAre) {
  Picture picture = MakePicture(Lines());
  ASSERT_TRUE(CleanScan({.deskew = true, .clean = true}, picture));
  l_int32 same = 0;
  pixEqual(picture.pix.get(), Lines().get(), &same);
  EXPECT_EQ(same, 1);
  EXPECT_TRUE(picture.changes.empty());
}

// Specks of 2 x 2 pixels go, at 150 dots an inch; dashes stay.
TEST(ScanCleaning, SpecksBecomePaper) {
  for (int depth : {1, 8, 32}) {
    PixPtr plain = Lines();
    if (depth == 1) plain.reset(pixConvertTo1(plain.get(), 128));
    if (depth == 32) plain.reset(pixConvertTo32(plain.get()));
    PixPtr specked(pixCopy(nullptr, plain.get()));
    for (int i = 0; i < 4; ++i) {
      pixSetPixel(specked.get(), 50 + i % 2, 50 + i / 2, depth == 1 ? 1 : 0);
    }
    Picture picture = MakePicture(std::move(specked));
    ASSERT_TRUE(CleanScan({.clean = true}, picture));
    l_int32 same = 0;
    pixEqual(picture.pix.get(), plain.get(), &same);
    EXPECT_EQ(same, 1) << depth;
    EXPECT_TRUE(picture.changes.Has(Change::kCleaned));
  }
}

TEST(ScanCleaning, BlankPagesHaveLittleInk) {
  PixPtr blank(pixCreate(kWidth, kHeight, 8));
  pixSetAllArbitrary(blank.get(), 230);
  for (int i = 0; i < 40; ++i) pixSetPixel(blank.get(), 29 * i, 17 * i, 0);
  EXPECT_LE(InkPercent(MakePicture(std::move(blank))), kBlankPercent);
  PixPtr black(pixCreate(kWidth, kHeight, 1));
  EXPECT_EQ(InkPercent(MakePicture(std::move(black))), 0);
}

// 1,000 of 960,000 pixels: half the ink of a short line.
TEST(ScanCleaning, FewWordsAreInk) {
  PixPtr pix(pixCreate(kWidth, kHeight, 8));
  pixSetAllArbitrary(pix.get(), 230);
  for (int i = 0; i < 1000; ++i) pixSetPixel(pix.get(), 300 + i % 100, 300 + i / 100, 0);
  EXPECT_GT(InkPercent(MakePicture(std::move(pix))), kBlankPercent);
  EXPECT_GT(InkPercent(MakePicture(Lines())), 10);
}

}  // namespace
}  // namespace sorrelin::tool

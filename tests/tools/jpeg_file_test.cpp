// Headers, ends and decoding of JPEG files.
#include "tools/formats/jpeg/jpeg_file.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"
#include "tools/formats/jpeg/jpeg_check.h"

namespace sorrelin::tool {
namespace {

using test::JpegForm;
using test::MakeJpeg;

unsigned Slope(int x, int y, int) { return static_cast<unsigned>(x + 2 * y); }

TEST(JpegFile, FactsAreThoseOfTheHeader) {
  JpegForm form;
  form.width = 50;
  form.height = 20;
  form.x_density = 300;
  form.y_density = 200;
  form.exif = test::MakeExif(3, 72, 72);
  auto const facts = ReadJpegFacts(MakeJpeg(form, Slope));
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->width, 50);
  EXPECT_EQ(facts->height, 20);
  EXPECT_EQ(facts->components, 3);
  EXPECT_EQ(facts->orientation, 3);
  EXPECT_EQ(facts->dpi, (Resolution{300, 200}));
  EXPECT_TRUE(facts->common);
}

TEST(JpegFile, WhatIsNoJpegHasNoFacts) {
  EXPECT_FALSE(ReadJpegFacts({}));
  std::vector<BYTE> const text(100, 'x');
  EXPECT_FALSE(ReadJpegFacts(text));
}

// Where the pixel of an upright picture lies in the stored one of 32 by 16.
std::pair<int, int> StoredAt(int orientation, int x, int y) {
  int const right = 31, bottom = 15;
  switch (orientation) {
    case 2:
      return {right - x, y};
    case 3:
      return {right - x, bottom - y};
    case 4:
      return {x, bottom - y};
    case 5:
      return {y, x};
    case 6:
      return {y, bottom - x};
    case 7:
      return {right - y, bottom - x};
    default:
      return {right - y, x};
  }
}

// Decoding rounds rows and columns differently, by one.
TEST(JpegFile, TurnedFileIsUprightWithoutLoss) {
  for (int orientation = 2; orientation <= 8; ++orientation) {
    JpegForm form;
    form.width = 32;
    form.height = 16;
    form.components = 1;
    form.quality = 30;
    form.exif = test::MakeExif(orientation);
    std::vector<BYTE> const file = MakeJpeg(
        form, [](int x, int y, int) { return static_cast<unsigned>(x * x * 7 + y * x) & 0xFF; });
    auto const turned = TurnedJpeg(file, *ReadJpegFacts(file));
    ASSERT_NE(turned, nullptr) << orientation;
    EXPECT_EQ(ReadJpegFacts(*turned)->orientation, 1);
    PixPtr const stored = DecodeJpeg(file), upright = DecodeJpeg(*turned);
    ASSERT_EQ(pixGetWidth(upright.get()), orientation >= 5 ? 16 : 32);
    for (int y = 0; y < pixGetHeight(upright.get()); ++y) {
      for (int x = 0; x < pixGetWidth(upright.get()); ++x) {
        l_uint32 expected = 0, tone = 0;
        auto const [stored_x, stored_y] = StoredAt(orientation, x, y);
        pixGetPixel(stored.get(), stored_x, stored_y, &expected);
        pixGetPixel(upright.get(), x, y, &tone);
        ASSERT_NEAR(static_cast<int>(tone), static_cast<int>(expected), 2)
            << orientation << " at " << x << ", " << y;
      }
    }
  }
}

TEST(JpegFile, FileOfBrokenBlocksOrDamagedOrUprightIsNotTurned) {
  JpegForm form;
  form.width = 33;
  form.height = 16;
  form.exif = test::MakeExif(3);
  std::vector<BYTE> file = MakeJpeg(form, Slope);
  EXPECT_EQ(TurnedJpeg(file, *ReadJpegFacts(file)), nullptr);
  form.width = 32;
  file = MakeJpeg(form, Slope);
  JpegFacts facts = *ReadJpegFacts(file);
  EXPECT_NE(TurnedJpeg(file, facts), nullptr);
  facts.orientation = 1;
  EXPECT_EQ(TurnedJpeg(file, facts), nullptr);
  facts.orientation = 3;
  file.resize(file.size() / 2);
  EXPECT_EQ(TurnedJpeg(file, facts), nullptr);
}

TEST(JpegFile, ArithmeticCodingIsNotCommon) {
  JpegForm form;
  form.arithmetic = true;
  auto const facts = ReadJpegFacts(MakeJpeg(form, Slope));
  ASSERT_TRUE(facts);
  EXPECT_FALSE(facts->common);
}

TEST(JpegFile, EndIsFoundInSequentialAndProgressiveFilesAndBeforeAppendedBytes) {
  for (bool const progressive : {false, true}) {
    JpegForm form;
    form.progressive = progressive;
    std::vector<BYTE> file = MakeJpeg(form, Slope);
    size_t const size = file.size();
    EXPECT_EQ(JpegEnd(file), size);
    file.insert(file.end(), 100, 0);
    EXPECT_EQ(JpegEnd(file), size);
  }
}

TEST(JpegFile, NoCutOfAFileHasAnEnd) {
  std::vector<BYTE> const whole = MakeJpeg({}, Slope);
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(JpegEnd(std::span(whole).first(size)), 0u) << size;
  }
}

// An EXIF block carries a small picture with an end of its own.
TEST(JpegFile, EndInsideAMarkerSegmentDoesNotCount) {
  JpegForm form;
  form.exif = test::MakeExif(1);
  form.exif.insert(form.exif.end(), {0xFF, 0xD9});
  std::vector<BYTE> file = MakeJpeg(form, Slope);
  file.resize(file.size() / 2);
  EXPECT_EQ(JpegEnd(file), 0u);
}

TEST(JpegFile, CutFilesAreDamaged) {
  for (bool const progressive : {false, true}) {
    JpegForm form;
    form.progressive = progressive;
    std::vector<BYTE> const whole = MakeJpeg(form, Slope);
    EXPECT_EQ(JpegDamage(whole), "");
    for (size_t size = 0; size + 2 < whole.size(); size += 7) {
      EXPECT_NE(JpegDamage(std::span(whole).first(size)), "") << size;
    }
  }
}

TEST(JpegFile, BytesBehindTheEndDoNoHarm) {
  std::vector<BYTE> file = MakeJpeg({}, Slope);
  file.insert(file.end(), 100, 0x55);
  EXPECT_NE(DecodeJpeg(file), nullptr);
}

}  // namespace
}  // namespace sorrelin::tool

// Headers, ends and decoding of JPEG files.
#include "tools/jpeg_file.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"

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

TEST(JpegFile, CutFilesAreNotDecoded) {
  std::vector<BYTE> const whole = MakeJpeg({}, Slope);
  EXPECT_NE(DecodeJpeg(whole), nullptr);
  for (size_t size = 0; size + 2 < whole.size(); size += 7) {
    EXPECT_EQ(DecodeJpeg(std::span(whole).first(size)), nullptr) << size;
  }
}

TEST(JpegFile, BytesBehindTheEndDoNoHarm) {
  std::vector<BYTE> file = MakeJpeg({}, Slope);
  file.insert(file.end(), 100, 0x55);
  EXPECT_NE(DecodeJpeg(file), nullptr);
}

}  // namespace
}  // namespace sorrelin::tool

// Deep samples and inks of TIFF pages.
#include "tools/formats/tiff/tiff_samples.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

using test::TiffPage;

unsigned Value(int x, int y, int s) {
  return static_cast<unsigned>(x * 811 + y * 2003 + s * 9001 + 77) & 0xFFFF;
}

std::optional<Samples> ReadPage(TiffPage const& page) {
  test::TempDir directory;
  std::string const name = (directory / "a.tif").string();
  test::WriteTiff(name, {page}, [&page](int, int x, int y, int s) {
    return page.bits == 16 ? Value(x, y, s) : Value(x, y, s) & 0xFF;
  });
  TIFF* const tiff = TIFFOpen(name.c_str(), "r");
  std::optional<Samples> samples;
  Changes ignored;
  if (HasDeepSamples(tiff)) samples = ReadTiffSamples(tiff, ignored);
  TIFFClose(tiff);
  return samples;
}

TiffPage Page(int bits, int samples, int photometric) {
  TiffPage page;
  page.width = 50;
  page.height = 37;
  page.bits = bits;
  page.samples = samples;
  page.photometric = photometric;
  page.compression = COMPRESSION_LZW;
  return page;
}

void ExpectValues(TiffPage const& page) {
  auto const samples = ReadPage(page);
  ASSERT_TRUE(samples);
  ASSERT_EQ(samples->bits, page.bits);
  ASSERT_EQ(samples->Components(), page.samples);
  BYTE const* at = samples->bytes.data();
  for (int y = 0; y < page.height; ++y) {
    for (int x = 0; x < page.width; ++x) {
      for (int s = 0; s < page.samples; ++s) {
        unsigned const high = page.bits == 16 ? *at++ : Value(x, y, s) >> 8;
        ASSERT_EQ(high << 8 | *at++, Value(x, y, s)) << x << " " << y;
      }
    }
  }
}

TEST(TiffSamples, StripsTilesAndPlanesGiveAllTheirBits) {
  for (TiffPage page : {Page(16, 1, PHOTOMETRIC_MINISBLACK), Page(16, 3, PHOTOMETRIC_RGB),
                        Page(16, 4, PHOTOMETRIC_SEPARATED), Page(8, 4, PHOTOMETRIC_SEPARATED)}) {
    for (bool const planar : {false, true}) {
      page.planar = planar;
      page.tile = 0;
      for (int const rows : {0, 10}) {
        page.rows_per_strip = rows;
        ExpectValues(page);
      }
      page.tile = 16;
      ExpectValues(page);
    }
  }
}

TEST(TiffSamples, WhatThePictureLibraryKeepsIsLeftToIt) {
  EXPECT_FALSE(ReadPage(Page(8, 3, PHOTOMETRIC_RGB)));
  EXPECT_FALSE(ReadPage(Page(8, 1, PHOTOMETRIC_MINISBLACK)));
}

TEST(TiffSamples, GreysWhereZeroIsWhiteAreTurnedAround) {
  auto const samples = ReadPage(Page(16, 1, PHOTOMETRIC_MINISWHITE));
  ASSERT_TRUE(samples);
  EXPECT_EQ(samples->bytes[0] << 8 | samples->bytes[1], 0xFFFF - 77);
}

TEST(TiffSamples, AlphaOfColoursIsLaidOnWhite) {
  TiffPage page = Page(16, 4, PHOTOMETRIC_RGB);
  page.extra_sample = EXTRASAMPLE_UNASSALPHA;
  auto const samples = ReadPage(page);
  ASSERT_TRUE(samples);
  ASSERT_EQ(samples->Components(), 3);
  double const alpha = Value(0, 0, 3) / 65535.0;
  double const expected = 77 * alpha + 65535 * (1 - alpha);
  EXPECT_NEAR(samples->bytes[0] << 8 | samples->bytes[1], expected, 1);
}

}  // namespace
}  // namespace sorrelin::tool

// TIFF pages that need no decoding.
#include "tools/formats/tiff/tiff_stored.h"

#include <gtest/gtest.h>

#include "tests/support/coefficients.h"
#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"
#include "tools/formats/jpeg/jpeg_file.h"

namespace sorrelin::tool {
namespace {

using test::CoefficientsOf;
using test::TiffPage;

unsigned Pattern(int, int x, int y, int s) {
  return static_cast<unsigned>(x * 2 + y * (3 + s) + x * y / 40) & 0xFF;
}
unsigned Ink(int, int x, int y, int) { return (x * x + 3 * y) % 7 < 2 ? 1 : 0; }

class TiffStored : public ::testing::Test {
 protected:
  ~TiffStored() override { Close(); }

  std::optional<StoredImage> Stored(TiffPage const& page, test::SampleAt const& sample = Pattern) {
    std::string const name = (directory_ / "a.tif").string();
    Close();
    test::WriteTiff(name, {page}, sample);
    tiff_ = TIFFOpen(name.c_str(), "r");
    return StoredTiffPage(tiff_);
  }

  std::vector<BYTE> RawStrip() { return test::RawStrip(directory_ / "a.tif"); }

  TIFF* tiff() const { return tiff_; }

 private:
  void Close() {
    if (tiff_ != nullptr) TIFFClose(tiff_);
    tiff_ = nullptr;
  }

  test::TempDir directory_;
  TIFF* tiff_ = nullptr;
};

TiffPage JpegPage(int samples, int photometric) {
  TiffPage page;
  page.width = 72;
  page.height = 48;
  page.bits = 8;
  page.samples = samples;
  page.photometric = photometric;
  page.compression = COMPRESSION_JPEG;
  return page;
}

std::vector<BYTE> BytesOf(StoredImage const& image) {
  return {image.bytes.begin(), image.bytes.end()};
}

TEST_F(TiffStored, Group4StripIsTheFilesOwn) {
  TiffPage page;
  page.orientation = ORIENTATION_RIGHTTOP;
  page.x_resolution = 200;
  page.y_resolution = 100;
  auto const image = Stored(page, Ink);
  ASSERT_TRUE(image);
  EXPECT_EQ(BytesOf(*image), RawStrip());
  EXPECT_EQ(image->form.filter, ImageFilter::kGroup4);
  EXPECT_FALSE(image->form.inverted);
  EXPECT_EQ(image->orientation, 6);
  EXPECT_EQ(image->dpi, (Resolution{200, 100}));
}

TEST_F(TiffStored, Group4OfSeveralStripsOrTilesIsNot) {
  TiffPage page;
  page.rows_per_strip = 10;
  EXPECT_FALSE(Stored(page, Ink));
  page.rows_per_strip = 0;
  page.tile = 16;
  EXPECT_FALSE(Stored(page, Ink));
}

// The strip's coded data stand in the file without a change, after the shared tables.
TEST_F(TiffStored, JpegStripKeepsItsDataAfterTheTables) {
  for (int const photometric : {PHOTOMETRIC_YCBCR, PHOTOMETRIC_RGB}) {
    auto const image = Stored(JpegPage(3, photometric));
    ASSERT_TRUE(image);
    std::vector<BYTE> const strip = RawStrip(), file = BytesOf(*image);
    ASSERT_GT(file.size(), strip.size());
    EXPECT_TRUE(std::equal(strip.begin() + 2, strip.end(),
                           file.end() - static_cast<long>(strip.size()) + 2));
    auto const facts = ReadJpegFacts(file);
    EXPECT_EQ(facts->colours,
              photometric == PHOTOMETRIC_RGB ? JpegColours::kRgb : JpegColours::kYcbcr);
    EXPECT_EQ(image->form.colours, ImageColours::kRgb);
  }
}

TEST_F(TiffStored, JpegGreyAndInksKeepTheirPolarity) {
  auto const grey = Stored(JpegPage(1, PHOTOMETRIC_MINISWHITE));
  ASSERT_TRUE(grey);
  EXPECT_TRUE(grey->form.inverted);
  auto const inks = Stored(JpegPage(4, PHOTOMETRIC_SEPARATED));
  ASSERT_TRUE(inks);
  EXPECT_EQ(inks->form.colours, ImageColours::kCmyk);
  EXPECT_FALSE(inks->form.inverted);
}

// libtiff decodes each strip to the pixels that it has in the joined file.
TEST_F(TiffStored, JpegOfSeveralStripsAndTilesIsJoined) {
  for (int const subsampling : {1, 2}) {
    for (bool const tiles : {false, true}) {
      TiffPage page = JpegPage(3, PHOTOMETRIC_YCBCR);
      page.width = 70;
      page.subsampling = subsampling;
      if (tiles) page.tile = 32;
      if (!tiles) page.rows_per_strip = 16;
      auto const image = Stored(page);
      ASSERT_TRUE(image) << subsampling << tiles;
      EXPECT_EQ(image->width, 70);
      EXPECT_EQ(image->height, 48);
      page.tile = page.rows_per_strip = 0;
      std::vector<BYTE> const joined = BytesOf(*image);
      auto const whole = Stored(page);
      ASSERT_TRUE(whole);
      auto const blocks = CoefficientsOf(joined), expected = CoefficientsOf(BytesOf(*whole));
      ASSERT_EQ(blocks.size(), expected.size());
      // One strip codes the same blocks, but for those at the edges of tiles, which libtiff fills
      // in its own way.
      for (size_t c = 0; c < blocks.size(); ++c) {
        ASSERT_EQ(blocks[c].size(), expected[c].size());
        for (size_t y = 0; y < blocks[c].size(); ++y) {
          size_t const inner = 70 / 8 / static_cast<size_t>(c == 0 ? 1 : subsampling);
          for (size_t x = 0; x < inner; ++x) EXPECT_EQ(blocks[c][y][x], expected[c][y][x]);
        }
      }
    }
  }
}

TEST_F(TiffStored, JpegPlanesAreNot) {
  TiffPage page = JpegPage(3, PHOTOMETRIC_RGB);
  page.planar = true;
  EXPECT_FALSE(Stored(page));
}

TEST_F(TiffStored, ProfileOfThePageIsKept) {
  TiffPage page = JpegPage(3, PHOTOMETRIC_YCBCR);
  page.profile = test::MakeProfile(3);
  auto const image = Stored(page);
  ASSERT_TRUE(image);
  ASSERT_NE(image->profile, nullptr);
  EXPECT_EQ(*image->profile, page.profile);
}

TEST_F(TiffStored, OtherCodingsAreNot) {
  TiffPage page = JpegPage(3, PHOTOMETRIC_RGB);
  for (int const compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE}) {
    page.compression = compression;
    EXPECT_FALSE(Stored(page));
  }
}

}  // namespace
}  // namespace sorrelin::tool

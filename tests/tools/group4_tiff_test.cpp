// Black and white pictures as TIFF files, read back by libtiff through Leptonica.
#include "tools/formats/group4_tiff.h"

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

PixPtr Pattern(int width, int height, bool resolution = true) {
  PixPtr pix(pixCreate(width, height, 1));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (x > 2 * y || (x + 3 * y) % 7 == 0) pixSetPixel(pix.get(), x, y, 1);
    }
  }
  if (resolution) pixSetResolution(pix.get(), 300, 200);
  return pix;
}

PixPtr Read(std::vector<BYTE> const& file) {
  test::TempDir const directory;
  test::WriteAll(directory / "a.tif", file);
  return PixPtr(pixReadTiff((directory / "a.tif").c_str(), 0));
}

TEST(Group4Tiff, EveryWidthComesBackWithItsResolution) {
  for (int width = 1; width <= 70; ++width) {
    PixPtr const pix = Pattern(width, 23);
    PixPtr const read = Read(Group4Tiff(pix.get()));
    ASSERT_NE(read, nullptr) << width;
    l_int32 same = 0;
    pixEqual(read.get(), pix.get(), &same);
    EXPECT_EQ(same, 1) << width;
    EXPECT_EQ(pixGetXRes(read.get()), 300);
    EXPECT_EQ(pixGetYRes(read.get()), 200);
    EXPECT_EQ(pixGetInputFormat(read.get()), IFF_TIFF_G4);
  }
}

TEST(Group4Tiff, UnknownResolutionStaysUnknown) {
  PixPtr const pix = Pattern(8, 8, false);
  EXPECT_EQ(pixGetXRes(Read(Group4Tiff(pix.get())).get()), 0);
}

TEST(Group4Tiff, OtherPicturesAreLeftToTheImageLibrary) {
  EXPECT_TRUE(Group4Tiff(PixPtr(pixCreate(8, 8, 8)).get()).empty());
  PixPtr const coloured = Pattern(8, 8);
  pixSetColormap(coloured.get(), pixcmapCreate(1));
  EXPECT_TRUE(Group4Tiff(coloured.get()).empty());
}

}  // namespace
}  // namespace sorrelin::tool

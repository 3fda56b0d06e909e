// TIFF files that grow page by page, read back by libtiff.
#include "tools/formats/tiff/tiff_file.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <memory>

#include "tests/support/pictures.h"
#include "tests/support/temp_dir.h"

namespace sorrelin::tool {
namespace {

class TiffFiles : public ::testing::Test {
 protected:
  // A file of one page, `width` by 2, whose samples are `value`.
  std::vector<BYTE> OnePage(int width, int bits, unsigned value, char const* mode = "w") const {
    test::TiffPage page = {.width = width, .height = 2, .bits = bits};
    page.samples = bits == 8 ? 3 : 1;
    page.photometric = bits == 8 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISWHITE;
    page.compression = bits == 8 ? COMPRESSION_NONE : COMPRESSION_CCITTFAX4;
    test::WriteTiff(
        directory_ / "one.tif", {page}, [&](int, int, int, int) { return value; }, mode);
    return test::ReadAll(directory_ / "one.tif");
  }

  using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;
  Tiff OpenTiff() const { return {TIFFOpen(Name().c_str(), "r"), &TIFFClose}; }
  std::string Name() const { return (directory_ / "all.tif").string(); }

  test::TempDir directory_;
  std::string problem_;
};

// Files of an odd size are followed by a byte of nothing: directories stand at even offsets.
TEST_F(TiffFiles, PagesOfEveryFormFollowEachOther) {
  {
    TiffFile file(Name());
    for (int i = 1; i <= 5; ++i) {
      EXPECT_TRUE(file.Add(OnePage(i, i % 2 == 0 ? 8 : 1, i % 3 == 0 ? 0 : 1), problem_)) << i;
    }
  }
  Tiff const file = OpenTiff();
  TIFF* const tiff = file.get();
  ASSERT_NE(tiff, nullptr);
  EXPECT_EQ(TIFFNumberOfDirectories(tiff), 5);
  for (unsigned i = 1; i <= 5; ++i) {
    ASSERT_EQ(TIFFSetDirectory(tiff, static_cast<tdir_t>(i - 1)), 1);
    unsigned width = 0;
    float dots = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &dots);
    EXPECT_EQ(width, i);
    EXPECT_EQ(dots, 72.0f);
    BYTE row[16] = {};
    ASSERT_EQ(TIFFReadScanline(tiff, row, 0, 0), 1);
    EXPECT_EQ(row[0] != 0, i % 3 != 0) << i;
  }
}

TEST_F(TiffFiles, WhatCannotBeMovedIsRefusedAndThePagesBeforeStand) {
  auto const page = OnePage(8, 1, 1);
  auto broken = page;
  broken[2] = 7;
  {
    TiffFile file(Name());
    EXPECT_TRUE(file.Add(page, problem_));
    EXPECT_FALSE(file.Add(broken, problem_));
    EXPECT_FALSE(file.Add({page.data(), 20}, problem_));
    EXPECT_FALSE(file.Add({}, problem_));
    EXPECT_FALSE(file.Add(OnePage(8, 1, 1, "w8"), problem_)) << "BigTIFF";
    EXPECT_TRUE(file.Add(page, problem_));
  }
  Tiff const file = OpenTiff();
  TIFF* const tiff = file.get();
  ASSERT_NE(tiff, nullptr);
  EXPECT_EQ(TIFFNumberOfDirectories(tiff), 2);
}

TEST_F(TiffFiles, FileThatCannotBeMadeIsNamed) {
  TiffFile file(directory_ / "no" / "all.tif");
  EXPECT_FALSE(file.Add(OnePage(8, 1, 1), problem_));
  EXPECT_EQ(problem_,
            "cannot be written: No such file or directory (see that there is room, and that it may "
            "be written to)");
}

}  // namespace
}  // namespace sorrelin::tool

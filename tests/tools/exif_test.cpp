// Orientation and resolution from EXIF blocks, whole and damaged.
#include "tools/formats/picture/exif.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"

namespace sorrelin::tool {
namespace {

TEST(Exif, OrientationAndResolutionAreReadInBothByteOrders) {
  for (bool const big_endian : {false, true}) {
    ExifFacts const facts = ReadExif(test::MakeExif(6, 300, 150, 2, big_endian));
    EXPECT_EQ(facts.orientation, 6);
    EXPECT_EQ(facts.dpi, (Resolution{300, 150}));
  }
}

TEST(Exif, CentimetresBecomeInches) {
  EXPECT_EQ(ReadExif(test::MakeExif(1, 100, 118, 3)).dpi, (Resolution{254, 300}));
}

TEST(Exif, UnitOfNoLengthGivesNoResolution) {
  EXPECT_EQ(ReadExif(test::MakeExif(1, 300, 300, 1)).dpi, Resolution{});
}

TEST(Exif, OrientationOutsideItsRangeCountsAsUpright) {
  EXPECT_EQ(ReadExif(test::MakeExif(0)).orientation, 1);
  EXPECT_EQ(ReadExif(test::MakeExif(9)).orientation, 1);
}

TEST(Exif, EveryCutOfABlockIsReadWithoutHarm) {
  std::vector<BYTE> const whole = test::MakeExif(6, 300, 300);
  for (size_t size = 0; size < whole.size(); ++size) {
    std::vector<BYTE> const cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
    ExifFacts const facts = ReadExif(cut);
    EXPECT_TRUE(facts.orientation == 1 || facts.orientation == 6) << size;
  }
}

TEST(Exif, DirectoryFarOutsideCountsAsAbsent) {
  std::vector<BYTE> block = test::MakeExif(6, 300, 300);
  block[4] = block[5] = block[6] = block[7] = 0xFF;
  EXPECT_EQ(ReadExif(block).orientation, 1);
}

}  // namespace
}  // namespace sorrelin::tool

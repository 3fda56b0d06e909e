// Matrices of pictures in all eight orientations.
#include <gtest/gtest.h>

#include "tools/formats/picture/picture.h"
#include "tools/ocr/picture_place.h"

namespace {

using namespace sorrelin::tool;

struct Point {
  double x, y;
};

Point Apply(Matrix const& m, Point p) {
  return {p.x * m.a + p.y * m.c + m.e, p.x * m.b + p.y * m.d + m.f};
}

// How a picture of each EXIF orientation is drawn so that it is seen upright on a page of 200 x
// 100.
constexpr Matrix kDrawn[] = {{200, 0, 0, 100, 0, 0},       {-200, 0, 0, 100, 200, 0},
                             {-200, 0, 0, -100, 200, 100}, {200, 0, 0, -100, 0, 100},
                             {0, -100, -200, 0, 200, 100}, {0, -100, 200, 0, 0, 100},
                             {0, 100, 200, 0, 0, 0},       {0, 100, -200, 0, 200, 0}};

TEST(PicturePlace, OrientationIsThatOfExif) {
  for (int i = 0; i < 8; ++i) EXPECT_EQ(OrientationOf(kDrawn[i], 0), i + 1);
}

TEST(PicturePlace, UprightPictureFillsThePageFromItsLowerLeftCorner) {
  for (int i = 0; i < 8; ++i) {
    Matrix const place = UprightPlace(kDrawn[i], i + 1);
    Point const origin = Apply(place, {0, 0}), corner = Apply(place, {1, 1});
    Point const right = Apply(place, {1, 0});
    EXPECT_NEAR(origin.x, 0, 1e-9) << i;
    EXPECT_NEAR(origin.y, 0, 1e-9) << i;
    EXPECT_NEAR(right.x, 200, 1e-9) << i;
    EXPECT_NEAR(right.y, 0, 1e-9) << i;
    EXPECT_NEAR(corner.x, 200, 1e-9) << i;
    EXPECT_NEAR(corner.y, 100, 1e-9) << i;
  }
}

// A page that viewers turn clockwise shows what was upright as it is turned.
TEST(PicturePlace, RotationOfThePageCounts) {
  EXPECT_EQ(OrientationOf(kDrawn[0], 90), 6);
  EXPECT_EQ(OrientationOf(kDrawn[0], 180), 3);
  EXPECT_EQ(OrientationOf(kDrawn[0], 270), 8);
}

// The dark pixel in the upper left corner is found again where the matrix says.
TEST(PicturePlace, TurnedPictureKeepsItsPixelsInPlace) {
  for (int quarters = 0; quarters < 4; ++quarters) {
    PixPtr pix(pixCreate(4, 2, 8));
    pixSetPixel(pix.get(), 0, 0, 1);
    pix.reset(pixRotateOrth(pix.get(), quarters));
    Matrix const place = TurnedPlace(kDrawn[0], quarters);
    int const width = pixGetWidth(pix.get()), height = pixGetHeight(pix.get());
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        l_uint32 value = 0;
        pixGetPixel(pix.get(), x, y, &value);
        if (value == 0) continue;
        Point const middle = Apply(place, {(x + 0.5) / width, 1 - (y + 0.5) / height});
        EXPECT_NEAR(middle.x, 25, 1e-9);
        EXPECT_NEAR(middle.y, 75, 1e-9);
      }
    }
  }
}

TEST(PicturePlace, SidesAreMeasuredAlongThePicture) {
  EXPECT_EQ(kDrawn[5].Width(), 100);
  EXPECT_EQ(kDrawn[5].Height(), 200);
}

}  // namespace

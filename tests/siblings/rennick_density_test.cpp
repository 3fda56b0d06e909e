// Pixels per metre to JFIF densities (dots per inch, 1, or per centimetre, 2) and back.
#include <gmock/gmock.h>
#include <siblings/rennick/density.h>

using namespace sorrelin::rennick;

namespace {

void ExpectDensity(PixelsPerMetre resolution, Density expected) {
  Density const density = DensityOf(resolution);
  EXPECT_EQ(density.unit, expected.unit);
  EXPECT_EQ(density.x, expected.x);
  EXPECT_EQ(density.y, expected.y);
}

}  // namespace

TEST(Density, UsualResolutionsAreDotsPerInchAndComeBack) {
  struct {
    LONG per_metre;
    uint16_t dpi;
  } const kUsual[] = {{2835, 72}, {3780, 96}, {3937, 100}, {7874, 200}, {11811, 300}, {23622, 600}};
  for (auto const& usual : kUsual) {
    ExpectDensity({usual.per_metre, usual.per_metre}, {1, usual.dpi, usual.dpi});
    EXPECT_EQ(ResolutionOf({1, usual.dpi, usual.dpi}).x, usual.per_metre);
  }
}

TEST(Density, DirectionsAreKeptApart) { ExpectDensity({7874, 3937}, {1, 200, 100}); }

// 300 per metre is 7.62 dots per inch, but exactly 3 per centimetre.
TEST(Density, CentimetresServeWhereInchesAreFarther) {
  ExpectDensity({300, 300}, {2, 3, 3});
  EXPECT_EQ(ResolutionOf({2, 3, 3}).x, 300);
}

// 5000 per metre is exactly 127 per inch and 50 per centimetre.
TEST(Density, InchesServeWhereBothAreExact) { ExpectDensity({5000, 5000}, {1, 127, 127}); }

TEST(Density, OneKnownDirectionServesBoth) {
  ExpectDensity({0, 11811}, {1, 300, 300});
  ExpectDensity({11811, -4}, {1, 300, 300});
}

TEST(Density, UnknownResolutionHasNoUnit) {
  ExpectDensity({0, 0}, {0, 1, 1});
  ExpectDensity({-1, INT32_MIN}, {0, 1, 1});
  EXPECT_EQ(ResolutionOf({0, 1, 1}).x, 0);
  EXPECT_EQ(ResolutionOf({0, 300, 300}).y, 0);
  EXPECT_EQ(ResolutionOf({3, 300, 300}).y, 0);
}

// Beyond 16 bits of dots per inch centimetres still fit, and beyond those nothing does.
TEST(Density, HugeResolutionsUseWhatFits) {
  ExpectDensity({6000000, 6000000}, {2, 60000, 60000});
  ExpectDensity({INT32_MAX, INT32_MAX}, {0, 1, 1});
}

TEST(Density, ResolutionBelowOneDotHasNoUnit) { ExpectDensity({10, 10}, {0, 1, 1}); }

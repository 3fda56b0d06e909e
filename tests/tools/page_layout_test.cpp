// Sizes of pages, and places on them.
#include "tools/make/pages/page_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace sorrelin::tool {
namespace {

// Width and height in thousandths of a point, and whether the page turns.
std::string Text(std::string_view size) {
  auto const paper = ParsePaper(size);
  if (!paper) return "none";
  return std::to_string(std::lround(paper->width * 1000)) + " " +
         std::to_string(std::lround(paper->height * 1000)) + (paper->turns ? " turns" : "");
}

// 72 points are 25.4 mm.
TEST(ParsePaper, NamesAreSizesThatTurn) {
  EXPECT_EQ(Text("a3"), "841890 1190551 turns");
  EXPECT_EQ(Text("a4"), "595276 841890 turns");
  EXPECT_EQ(Text("a5"), "419528 595276 turns");
  EXPECT_EQ(Text("a6"), "297638 419528 turns");
  EXPECT_EQ(Text("letter"), "612000 792000 turns");
  EXPECT_EQ(Text("legal"), "612000 1008000 turns");
  EXPECT_EQ(Text("tabloid"), "792000 1224000 turns");
}

TEST(ParsePaper, NumbersTakeAnyOfFourUnits) {
  EXPECT_EQ(Text("254x127mm"), "720000 360000");
  EXPECT_EQ(Text("25.4x12.7cm"), "720000 360000");
  EXPECT_EQ(Text("8.5x11in"), "612000 792000");
  EXPECT_EQ(Text("595x842pt"), "595000 842000");
}

TEST(ParsePaper, LetterCaseDoesNotMatterAndBothSeriesAreKnown) {
  EXPECT_EQ(Text("A4"), Text("a4"));
  EXPECT_EQ(Text("Letter"), Text("letter"));
  EXPECT_EQ(Text("a0"), "2383937 3370394 turns");
  EXPECT_EQ(Text("B5"), "498898 708661 turns");
  EXPECT_EQ(Text("b10"), "87874 124724 turns");
  EXPECT_EQ(Text("Executive"), "522000 756000 turns");
  for (char const* const name : {"a11", "c4", "a", "a-1", "a04", "a4x", "b 5"}) {
    EXPECT_EQ(Text(name), "none") << name;
  }
}

TEST(ParsePaper, UnitMayFollowEitherNumber) {
  EXPECT_EQ(Text("254mmx127mm"), "720000 360000");
  EXPECT_EQ(Text("10inx127mm"), "720000 360000");
  EXPECT_EQ(Text("254MMx127"), "720000 360000");
}

TEST(ParseLength, IsANumberWithAUnit) {
  EXPECT_EQ(ParseLength("0"), 0);
  EXPECT_EQ(ParseLength("0.5in"), 36);
  EXPECT_EQ(ParseLength("25.4mm"), 72);
  for (char const* const length : {"", "mm", "5", "-1mm", "7201pt", "1mmx2mm", "1 mm"}) {
    EXPECT_FALSE(ParseLength(length)) << length;
  }
}

TEST(PlaceOn, BorderStaysFree) {
  Paper const paper = {200, 300, false};
  PagePlacement const place = PlaceOn(paper, Fit::kWithin, 20, 80, 80);
  EXPECT_EQ(place.x, 20 * PagePlacement::kUnitsPerPoint);
  EXPECT_EQ(place.width, 160 * PagePlacement::kUnitsPerPoint);
  EXPECT_EQ(place.y, 70 * PagePlacement::kUnitsPerPoint);
}

TEST(PlaceOn, PictureOfItsOwnSizeGetsALargerPage) {
  PagePlacement const place = PlaceWithBorder(10, 72, 36);
  EXPECT_EQ(place.page.x, 92);
  EXPECT_EQ(place.page.y, 56);
  EXPECT_EQ(place.x, 10 * PagePlacement::kUnitsPerPoint);
  EXPECT_EQ(place.height, 36 * PagePlacement::kUnitsPerPoint);
}

TEST(ParsePaper, PagesHave3To14400Points) {
  EXPECT_EQ(Text("3x14400pt"), "3000 14400000");
  for (char const* const size : {"2.9x100pt", "100x2.9pt", "14401x10pt", "10x14401pt", "1e9x10pt",
                                 "-5x10pt", "0x0mm", "nanx10pt", "infx10pt"}) {
    EXPECT_EQ(Text(size), "none") << size;
  }
}

TEST(ParsePaper, AnythingElseIsNone) {
  for (char const* const size : {"", "a4 ", "c9", "210x297", "210mm", "210xmm", "x297mm",
                                 "210xmmx297mm", "210*297mm", "210x297km", "210x297mmm"}) {
    EXPECT_EQ(Text(size), "none") << size;
  }
}

// The page, then the corner and the sides of the picture in ten-thousandths of a point.
std::string Place(Paper paper, Fit fit, double width, double height) {
  PagePlacement const at = PlaceOn(paper, fit, 0, width, height);
  return std::to_string(at.page.x) + "x" + std::to_string(at.page.y) + ": " + std::to_string(at.x) +
         " " + std::to_string(at.y) + ", " + std::to_string(at.width) + " " +
         std::to_string(at.height);
}

constexpr Paper kPage = {300, 200, false};

TEST(PlaceOn, WithinIsAsLargeAsThePageAllowsInItsMiddle) {
  EXPECT_EQ(Place(kPage, Fit::kWithin, 50, 100), "300x200: 1000000 0, 1000000 2000000");
  EXPECT_EQ(Place(kPage, Fit::kWithin, 600, 100), "300x200: 0 750000, 3000000 500000");
}

TEST(PlaceOn, ShrinkKeepsTheSizeOfWhatFits) {
  EXPECT_EQ(Place(kPage, Fit::kShrink, 50, 100), "300x200: 1250000 500000, 500000 1000000");
  EXPECT_EQ(Place(kPage, Fit::kShrink, 600, 100), "300x200: 0 750000, 3000000 500000");
}

TEST(PlaceOn, FillCoversThePageAndStandsOut) {
  EXPECT_EQ(Place(kPage, Fit::kFill, 50, 100), "300x200: 0 -2000000, 3000000 6000000");
  EXPECT_EQ(Place(kPage, Fit::kFill, 600, 100), "300x200: -4500000 0, 12000000 2000000");
}

TEST(PlaceOn, StretchTakesThePagesShape) {
  EXPECT_EQ(Place(kPage, Fit::kStretch, 50, 100), "300x200: 0 0, 3000000 2000000");
}

TEST(PlaceOn, PaperThatTurnsLiesAsThePictureDoes) {
  Paper const turning = {200, 300, true};
  EXPECT_EQ(Place(turning, Fit::kStretch, 20, 10), "300x200: 0 0, 3000000 2000000");
  EXPECT_EQ(Place(turning, Fit::kStretch, 10, 20), "200x300: 0 0, 2000000 3000000");
  EXPECT_EQ(Place(turning, Fit::kStretch, 10, 10), "200x300: 0 0, 2000000 3000000");
  EXPECT_EQ(Place({200, 300, false}, Fit::kStretch, 20, 10), "200x300: 0 0, 2000000 3000000");
}

TEST(PlaceOn, PagesAreOfWholePointsAndFilledToThem) {
  EXPECT_EQ(Place({595.276, 841.89, true}, Fit::kStretch, 10, 20), "595x842: 0 0, 5950000 8420000");
}

}  // namespace
}  // namespace sorrelin::tool

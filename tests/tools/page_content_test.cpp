// Names and sizes of what pages draw.
#include "tools/documents/page_content.h"

#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

void ExpectSize(std::string_view content, std::string const& name, double width, double height) {
  auto const drawn = DrawnPictures(content);
  auto const found = drawn.find(name);
  ASSERT_NE(found, drawn.end()) << content;
  EXPECT_DOUBLE_EQ(found->second.width, width) << content;
  EXPECT_DOUBLE_EQ(found->second.height, height) << content;
}

TEST(PageContent, PictureIsAsLargeAsItsMatrixMakesIt) {
  ExpectSize("q 612 0 0 792 0 0 cm /Im0 Do Q", "Im0", 612, 792);
  ExpectSize("300 0 0 -200 10 210 cm/Im0 Do", "Im0", 300, 200);
  ExpectSize("+12.5 0 0 .5 0 0 cm\r/A Do", "A", 12.5, 0.5);
}

TEST(PageContent, MatricesMultiply) {
  ExpectSize("1 0 0 1 0 0 cm\n793.5 0 0 595 24 0 cm\n/Im5 Do", "Im5", 793.5, 595);
  ExpectSize("0.5 0 0 0.25 0 0 cm 100 0 0 200 0 0 cm /Im0 Do", "Im0", 50, 50);
}

// A quarter turn puts the width of the picture along the height of the page.
TEST(PageContent, TurnedPictureKeepsItsOwnSides) {
  ExpectSize("0 300 -200 0 200 0 cm /Im0 Do", "Im0", 300, 200);
  ExpectSize("0 1 -1 0 0 0 cm 30 0 0 40 0 0 cm /Im0 Do", "Im0", 30, 40);
}

TEST(PageContent, RestoredStateHasTheMatrixThatWasSaved) {
  ExpectSize("q 5 0 0 5 0 0 cm q 2 0 0 2 0 0 cm Q /Im0 Do Q /Im1 Do", "Im0", 5, 5);
  ExpectSize("q 5 0 0 5 0 0 cm q 2 0 0 2 0 0 cm Q /Im0 Do Q /Im1 Do", "Im1", 1, 1);
  ExpectSize("Q Q 3 0 0 4 0 0 cm /Im0 Do", "Im0", 3, 4);
}

TEST(PageContent, FirstDrawingOfAPictureCounts) {
  ExpectSize("q 9 0 0 8 0 0 cm /Im0 Do Q 2 0 0 2 0 0 cm /Im0 Do", "Im0", 9, 8);
}

TEST(PageContent, OnlyNamesBeforeDoAreDrawn) {
  auto const drawn = DrawnPictures("/GS0 gs /Im0 Do 5 Do /Im1 cs Do /Im2/Im3 Do");
  EXPECT_EQ(drawn.size(), 2u);
  EXPECT_TRUE(drawn.contains("Im0"));
  EXPECT_TRUE(drawn.contains("Im3"));
  EXPECT_TRUE(DrawnPictures("").empty());
  EXPECT_TRUE(DrawnPictures("/Im0").empty());
}

TEST(PageContent, WhatIsNoNumberIsZero) {
  ExpectSize("inf nan x 7 0 0 cm /Im0 Do", "Im0", 0, 7);
  ExpectSize("cm /Im0 Do", "Im0", 0, 0);
}

TEST(PageContent, ManySavedStatesTakeNoMemory) {
  std::string content;
  for (int i = 0; i < 100'000; ++i) content += "q ";
  ExpectSize(content + "6 0 0 7 0 0 cm /Im0 Do", "Im0", 6, 7);
}

}  // namespace
}  // namespace sorrelin::tool

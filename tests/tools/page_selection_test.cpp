// Lists of pages and patterns of names.
#include "tools/documents/page_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sorrelin::tool {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<DWORD> PagesOf(std::string_view text, DWORD count) {
  auto const selection = PageSelection::Parse(text);
  EXPECT_TRUE(selection) << text;
  return selection ? selection->Of(count) : std::vector<DWORD>{};
}

TEST(PageSelection, WithoutAListAllPages) {
  EXPECT_THAT(PageSelection().Of(3), ElementsAre(0, 1, 2));
  EXPECT_THAT(PageSelection().Of(0), IsEmpty());
  EXPECT_FALSE(PageSelection().GoesBeyond(0));
}

TEST(PageSelection, RangesKeepTheirOrderAndEachPageComesOnce) {
  EXPECT_THAT(PagesOf("1-3,7", 9), ElementsAre(0, 1, 2, 6));
  EXPECT_THAT(PagesOf("7,1-3,2", 9), ElementsAre(6, 0, 1, 2));
  EXPECT_THAT(PagesOf("8-", 9), ElementsAre(7, 8));
  EXPECT_THAT(PagesOf("4-4", 9), ElementsAre(3));
}

TEST(PageSelection, PagesBehindTheLastAreLeftOutAndTold) {
  EXPECT_THAT(PagesOf("2-4294967295", 3), ElementsAre(1, 2));
  EXPECT_TRUE(PageSelection::Parse("2-4")->GoesBeyond(3));
  EXPECT_TRUE(PageSelection::Parse("1,4-")->GoesBeyond(3));
  EXPECT_FALSE(PageSelection::Parse("1,3-")->GoesBeyond(3));
}

TEST(PageSelection, WhatIsNoListIsRefused) {
  for (char const* const text :
       {"", "0", "a", "1,", ",1", "3-1", "-3", "1-2-3", "1 2", "1-0", "4294967296", "+1"}) {
    EXPECT_FALSE(PageSelection::Parse(text)) << text;
  }
}

std::string NameOf(std::string_view pattern, DWORD page) {
  auto const parsed = NamePattern::Parse(pattern);
  EXPECT_TRUE(parsed) << pattern;
  return parsed ? parsed->NameOf(page) : "";
}

TEST(NamePattern, NumberTakesItsPlace) {
  EXPECT_EQ(NameOf("a-%d.png", 12), "a-12.png");
  EXPECT_EQ(NameOf("%03d", 7), "007");
  EXPECT_EQ(NameOf("%3d", 1234), "1234");
  EXPECT_EQ(NameOf("%0d", 5), "5");
  EXPECT_EQ(NameOf("100%%-%d%%", 5), "100%-5%");
}

TEST(NamePattern, PicturesHaveANumberOfTheirOwn) {
  auto const pattern = NamePattern::Parse("p%02d-%i.png");
  ASSERT_TRUE(pattern);
  EXPECT_TRUE(pattern->HasPage() && pattern->HasPicture());
  EXPECT_EQ(pattern->NameOf(3, 12), "p03-12.png");
}

TEST(NamePattern, NameWithoutANumberStaysItself) {
  EXPECT_FALSE(NamePattern::Parse("a%%d.tif")->HasPage());
  EXPECT_EQ(NameOf("a%%d.tif", 5), "a%d.tif");
}

TEST(NamePattern, OtherPercentSignsAreRefused) {
  for (char const* const text : {"%", "%s", "%d%d", "%i%i", "%5%", "%123d", "%-3d", "a%"}) {
    EXPECT_FALSE(NamePattern::Parse(text)) << text;
  }
}

TEST(NamePattern, TextAsAPatternStandsForItself) {
  EXPECT_EQ(NameOf(PatternOf("50% of %d"), 5), "50% of %d");
}

}  // namespace
}  // namespace sorrelin::tool

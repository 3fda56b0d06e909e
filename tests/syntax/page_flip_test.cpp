// Whether a content stream draws its image upside down.
#include <gtest/gtest.h>
#include <sorrelin/syntax/page_flip.h>

#include <string>

namespace sorrelin {
namespace {

int Pieces(std::string const& text, size_t piece) {
  PageFlipTest test;
  for (size_t at = 0; at < text.size(); at += piece) {
    std::string const part = text.substr(at, piece);
    if (!test.Feed({reinterpret_cast<BYTE const*>(part.data()), part.size()})) break;
  }
  return test.Finish();
}

TEST(PageFlip, NullTextIsUpright) { EXPECT_EQ(IsPageContentFlipped(nullptr), 0); }

TEST(PageFlip, TextWithoutDoIsUpright) {
  EXPECT_EQ(IsPageContentFlipped(""), 0);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 792 cm /Im0 do"), 0);
}

TEST(PageFlip, NegativeVerticalScaleBeforeDoIsFlipped) {
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 792 cm /Im0 Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 1 0 792 cm /Im0 Do"), 0);
}

TEST(PageFlip, ScaleThatAPairOfQTakesBackIsUpright) {
  EXPECT_EQ(IsPageContentFlipped("q 1 0 0 -1 0 792 cm Q /Im0 Do"), 0);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 792 cm q 1 0 0 -1 0 0 cm Q /Im0 Do"), 1);
}

TEST(PageFlip, NestedPairsRestoreInReverseOrder) {
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 0 cm q q 1 0 0 -1 0 0 cm Q /Im0 Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 0 cm q q 1 0 0 -1 0 0 cm q Q /Im0 Do"), 0);
}

TEST(PageFlip, TwoNegativeScalesAreUpright) {
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 0 cm 5 0 0 -7 0 0 cm /Im0 Do"), 0);
}

// (0 1 -1 0) twice is a turn by 180 degrees; the second operand's b and c count with the first's.
TEST(PageFlip, MatricesAreMultipliedWhole) {
  EXPECT_EQ(IsPageContentFlipped("0 1 -1 0 0 0 cm 0 1 -1 0 0 0 cm /Im0 Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("0 1 -1 0 0 0 cm 0 -1 1 0 0 0 cm /Im0 Do"), 0);
}

// The operand comes first: d is c*B + d*D with the current matrix in capitals, 1*-2 + 1*1 here.
// The other order gives C*b + D*d, 0*0 + 1*1.
TEST(PageFlip, OperandIsTheFirstFactor) {
  EXPECT_EQ(IsPageContentFlipped("1 -2 0 1 0 0 cm 1 0 1 1 0 0 cm /Im0 Do"), 1);
}

TEST(PageFlip, FirstDoDecides) {
  EXPECT_EQ(IsPageContentFlipped("/Im0 Do 1 0 0 -1 0 0 cm /Im1 Do"), 0);
}

TEST(PageFlip, BlankCarriageReturnLineFeedAndTabSeparate) {
  EXPECT_EQ(IsPageContentFlipped("1\r0\n0\t-1 0\r\n792 \t cm\n/Im0\rDo"), 1);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 792 cm\f/Im0 Do"), 0);  // "cm\f/Im0" is one token
}

TEST(PageFlip, DoAtTheEndOfTheTextNeedsNoSeparator) {
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 0 cm Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 0 cm D"), 0);
}

TEST(PageFlip, OnlyTheLastSixTokensAreOperands) {
  EXPECT_EQ(IsPageContentFlipped("9 9 9 1 0 0 -1 0 0 cm Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("0 1 0 0 -1 0 0 5 cm Do"), 0);  // d is 0
}

// q is among the six, as 0: the operands are (0 0 0 -1 0 0) then.
TEST(PageFlip, OperatorsAreOperandsToo) {
  EXPECT_EQ(IsPageContentFlipped("q 0 0 -1 0 0 cm Do"), 1);
}

TEST(PageFlip, CmWithFewerThanSixTokensLeavesTheMatrix) {
  EXPECT_EQ(IsPageContentFlipped("0 0 -1 0 0 cm Do"), 0);
}

TEST(PageFlip, RestoreWithoutSaveLeavesTheMatrix) {
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -1 0 0 cm Q Q Do"), 1);
}

TEST(PageFlip, NumbersEndAtTheFirstOtherCharacter) {
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -.5x 0 0 cm Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -x5 0 0 cm Do"), 0);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -inf 0 0 cm Do"), 0);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 +2 0 0 cm 1 0 0 -0.001 0 0 cm Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 1e5 0 0 cm 1 0 0 -1 0 0 cm Do"), 1);
  EXPECT_EQ(IsPageContentFlipped("1 0 0 -- 0 0 cm Do"), 0);
}

TEST(PageFlip, NumbersBeyondADoubleKeepTheirSign) {
  std::string const digits(400, '9');
  EXPECT_EQ(IsPageContentFlipped(("1 0 0 -" + digits + " 0 0 cm Do").c_str()), 1);
  EXPECT_EQ(IsPageContentFlipped(("1 0 0 " + digits + " 0 0 cm Do").c_str()), 0);
}

TEST(PageFlip, LongTokensAreNoOperators) {
  std::string const name = "/" + std::string(5000, 'x');
  EXPECT_EQ(IsPageContentFlipped(("1 0 0 -1 0 0 cm " + name + " Do").c_str()), 1);
  EXPECT_EQ(IsPageContentFlipped(("1 0 0 -1 0 0 cm Do" + name).c_str()), 0);
}

TEST(PageFlip, TextInPiecesOfAnySizeGivesTheSame) {
  std::string const text = "q 612 0 0 -792.5 0 792 cm /Im0 Do Q";
  for (size_t piece = 1; piece <= text.size(); ++piece) EXPECT_EQ(Pieces(text, piece), 1) << piece;
}

TEST(PageFlip, TextEndsAtItsFirstNul) {
  using namespace std::string_literals;
  EXPECT_EQ(Pieces("1 0 0 -1 0 0 cm\0 Do"s, 4), 0);
  EXPECT_EQ(Pieces("1 0 0 -1 0 0 cm Do\0 x"s, 4), 1);
}

TEST(PageFlip, AMillionEqualSavesAreFollowed) {
  std::string text = "1 0 0 -1 0 0 cm ";
  for (int i = 0; i < 1000000; ++i) text += "q ";
  text += "1 0 0 -1 0 0 cm ";
  for (int i = 0; i < 1000000; ++i) text += "Q ";
  EXPECT_EQ(IsPageContentFlipped((text + "Do").c_str()), 1);
}

// `count` saves of an upright matrix, one of a flipped matrix that is turned back afterwards, and
// the restoring of the last that was saved.
std::string FlippedAfter(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "q ";
  return text + "1 0 0 -1 0 0 cm q 1 0 0 -1 0 0 cm Q Do";
}

TEST(PageFlip, NoMoreThan65536MatricesAreSaved) {
  EXPECT_EQ(IsPageContentFlipped(FlippedAfter(65535).c_str()), 1);
  EXPECT_EQ(IsPageContentFlipped(FlippedAfter(65536).c_str()), 0);
}

}  // namespace
}  // namespace sorrelin

// Words of a rendered text layer, and how they are laid on a page.
#include <gtest/gtest.h>

#include <cmath>
#include <qpdf/QPDF.hh>

#include "tools/ocr/layer_content.h"
#include "tools/ocr/layer_font.h"
#include "tools/ocr/layer_words.h"
#include "tools/ocr/straightening.h"

namespace {

using namespace sorrelin::tool;

constexpr double kDegree = 3.14159265358979 / 180;

void ExpectNear(Matrix const& a, Matrix const& b, double bound = 1e-6) {
  double const differences[] = {a.a - b.a, a.b - b.b, a.c - b.c, a.d - b.d, a.e - b.e, a.f - b.f};
  for (double const difference : differences) EXPECT_NEAR(difference, 0, bound);
}

// A page with this content.
class RenderedPage {
 public:
  explicit RenderedPage(std::string const& content) {
    qpdf_.emptyPDF();
    page_ = qpdf_.makeIndirectObject(QPDFObjectHandle::parse("<</Type /Page>>"));
    page_.replaceKey("/Contents", QPDFObjectHandle::newStream(&qpdf_, content));
  }
  std::vector<LayerWord> Words() const { return WordsOfLayer(page_); }

 private:
  QPDF qpdf_;
  QPDFObjectHandle page_;
};

std::string Digits(std::u16string const& text) {
  std::string digits;
  for (char16_t const unit : text) {
    char hex[8];
    std::snprintf(hex, sizeof hex, "%04x", static_cast<unsigned>(unit));
    digits += hex;
  }
  return digits;
}

std::string ContentOf(std::vector<LayerWord> words) {
  return LayerContent(std::move(words), {}, {"/F", Digits});
}

// Two letters and a blank, each half of 10 points, stretched to 90 percent, are 13.5 points long.
TEST(TextLayer, WordFillsItsBoxFromFootToHead) {
  auto const words = RenderedPage(
                         "BT 1 0 0 1 70 500 Tm /f-0-0 10 Tf 90 Tz [ <006f006b0020> ] TJ "
                         "20 -15 Td [ <0061> ] TJ ET")
                         .Words();
  ASSERT_EQ(words.size(), 2u);
  EXPECT_EQ(words[0].text, u"ok");
  EXPECT_FALSE(words[0].from_right);
  ExpectNear(words[0].box, {13.5, 0, 0, 10, 70, 498});
  ExpectNear(words[1].box, {4.5, 0, 0, 10, 90, 483});
}

TEST(TextLayer, MirroredWordIsReadFromTheRight) {
  auto const words =
      RenderedPage("BT -1 0 0 1 70 500 Tm /f-0-0 10 Tf 100 Tz [ <05d005d1> ] TJ ET").Words();
  ASSERT_EQ(words.size(), 1u);
  EXPECT_TRUE(words[0].from_right);
  ExpectNear(words[0].box, {10, 0, 0, 10, 60, 498});
}

TEST(TextLayer, LettersReadFromTheRightAreSeenInTurnAndNumbersAsTheyAre) {
  EXPECT_EQ(SeenFromLeft(u"\u05D0\u05D1\u05D2."), u".\u05D2\u05D1\u05D0");
  EXPECT_EQ(SeenFromLeft(u"\u05D1-12.50"), u"12.50-\u05D1");
  EXPECT_EQ(SeenFromLeft(u"\u0627\u0661\u0662"), u"\u0661\u0662\u0627");
  EXPECT_EQ(SeenFromLeft(u"\u05D0\U00010900"), u"\U00010900\u05D0");
  EXPECT_EQ(SeenFromLeft(u""), u"");
}

// Two letters that share 2.5 points of 20 are 11.25 points wide each, 225 percent of 5, and the
// second one goes back by 111.1 parts of an em of 22.5 points. The blank of the gap of 10 points is
// half of 10.1 points wide, stretched to 198 percent.
TEST(TextLayer, WordsReadFromTheRightAreDrawnInTheirOrderWithTheirTextAsItIsSeen) {
  EXPECT_EQ(ContentOf({{u"\u05D0\u05D1", {20, 0, 0, 10, 60, 100}, true},
                       {u"\u05D2", {20, 0, 0, 10, 30, 101}, true},
                       {u"\u05D3", {20, 0, 0, 10, 60, 80}, true}}),
            "BT\n3 Tr\n"
            "/Span <</ActualText <feff05d105d0>>> BDC\n"
            "-1 0 0 1 80 100.5 Tm\n/F 10 Tf\n225 Tz [<05d0>111.1<05d1>] TJ\nEMC\n"
            "/F 10.1 Tf\n198 Tz <0020> Tj\n"
            "/Span <</ActualText <feff05d2>>> BDC\n"
            "-1 0 0 1 50 100.5 Tm\n/F 10 Tf\n400 Tz [<05d2>] TJ\nEMC\n"
            "/Span <</ActualText <feff05d3>>> BDC\n"
            "-1 0 0 1 80 80 Tm\n400 Tz [<05d3>] TJ\nEMC\n"
            "ET\n");
}

// 20 points for 2 letters of 5, and a gap of 10 points for a blank of 5.
TEST(TextLayer, BlankFillsTheGapToTheNextWord) {
  EXPECT_EQ(ContentOf({{u"ab", {20, 0, 0, 10, 60, 100}}, {u"c", {5, 0, 0, 10, 90, 100}}}),
            "BT\n3 Tr\n"
            "1 0 0 1 60 100 Tm\n/F 10 Tf\n200 Tz <00610062> Tj\n200 Tz <0020> Tj\n"
            "1 0 0 1 90 100 Tm\n100 Tz <0063> Tj\n"
            "ET\n");
}

// A rise of 2 points in a size of 10 is shared by both words; one of 4 is kept.
TEST(TextLayer, WordsOfALineThatRisesLittleHaveOneFoot) {
  auto const content = [](double rise) {
    return ContentOf({{u"a", {5, 0, 0, 10, 60, 100}}, {u"b", {5, 0, 0, 10, 70, 100 + rise}}});
  };
  EXPECT_NE(content(2).find("60 101 Tm"), std::string::npos);
  EXPECT_NE(content(2).find("70 101 Tm"), std::string::npos);
  EXPECT_NE(content(4).find("60 100 Tm"), std::string::npos);
  EXPECT_NE(content(4).find("70 104 Tm"), std::string::npos);
}

TEST(TextLayer, ScriptsWithoutBlanksAreJoined) {
  std::string const content =
      ContentOf({{u"\u65E5", {10, 0, 0, 10, 60, 100}}, {u"\u672C", {10, 0, 0, 10, 72, 100}}});
  EXPECT_EQ(content.find("0020"), std::string::npos);
  EXPECT_NE(content.find("240 Tz <65e5> Tj"), std::string::npos);
}

TEST(TextLayer, WordOfATiltedLineIsLevelAboutItsMiddle) {
  double const cosine = std::cos(2 * kDegree), sine = std::sin(2 * kDegree);
  Matrix const tilted = {40 * cosine, 40 * sine, -10 * sine, 10 * cosine, 100, 200};
  Matrix const level = LevelBox(tilted);
  ExpectNear(level, {40, 0, 0, 10, 100 + (tilted.a + tilted.c - 40) / 2,
                     200 + (tilted.b + tilted.d - 10) / 2});
  Matrix const down = {0, -40, 10, 0, 100, 200};
  ExpectNear(LevelBox(down), down);
  Matrix const slanted = {30, 30, -10, 10, 0, 0};
  ExpectNear(LevelBox(slanted), slanted);
}

// The middle of the picture is that of the copy, and a pixel right of it is where it was before the
// turn: a quarter clockwise brings the right side to the foot.
TEST(TextLayer, StraightCopyLiesAboutTheMiddleOfThePicture) {
  Matrix const place = StraightPlace({200, 0, 0, 100, 0, 0}, {2000, 1000}, {2400, 1600}, 90);
  ExpectNear(Matrix{1, 0, 0, 1, 0.5, 0.5}.Then(place), {0, 240, -160, 0, 100, 50});
}

TEST(TextLayer, LettersOfOtherPlanesHaveCodesOfTheirOwn) {
  QPDF document, rendered;
  document.emptyPDF();
  rendered.emptyPDF();
  QPDFObjectHandle page =
      QPDFObjectHandle::parse(&rendered, "<</Resources <</Font <</f-0-0 <</Type /Font>> >> >> >>");
  page.getKey("/Resources")
      .getKey("/Font")
      .replaceKey("/f-0-0",
                  rendered.makeIndirectObject(QPDFObjectHandle::parse("<</Type /Font>>")));
  LayerFont font(document);
  QPDFObjectHandle copy = font.Copy(rendered, page);
  EXPECT_EQ(font.CodesOf(u"a\U0001D400\U0001D401\U0001D400"), "0061d800d801d800");
  EXPECT_EQ(font.CodesOf(std::u16string(1, char16_t{0xD835})), "fffd");
  font.Finish();
  auto const map = copy.getKey("/ToUnicode").getStreamData();
  std::string const text(reinterpret_cast<char const*>(map->getBuffer()), map->getSize());
  EXPECT_NE(text.find("<d801> <d835dc01>"), std::string::npos);
}

}  // namespace

// hOCR texts in, pages and words out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sorrelin/ocr/hocr.h>
#include <sorrelin/platform/wide_string.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

namespace {

using sorrelin::HocrDocument;
using sorrelin::HocrWord;
using sorrelin::ParseHocr;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// ASCII as the interface's text.
sorrelin::WideString Wide(std::string const& text) { return {text.begin(), text.end()}; }

struct Parsed {
  int result;
  HocrDocument document;
};

Parsed Parse(sorrelin::WideString const& text) {
  Parsed parsed{};
  parsed.result = ParseHocr(parsed.document, text.c_str());
  return parsed;
}

Parsed Parse(std::string const& text) { return Parse(Wide(text)); }

std::string WordTag(std::string const& title, std::string const& content = "x") {
  return "<span class='ocrx_word' id='w' title='" + title + "'>" + content + "</span>";
}

std::string PageTag(std::string const& title, std::string const& content = "") {
  return "<div class='ocr_page' title='" + title + "'>" + content + "</div>";
}

// The one word of a text, which must hold one and parse.
HocrWord OnlyWord(std::string const& text) {
  Parsed const parsed = Parse(text);
  EXPECT_EQ(parsed.result, 1);
  EXPECT_EQ(parsed.document.words.size(), 1u);
  return parsed.document.words.empty() ? HocrWord{} : parsed.document.words[0];
}

std::vector<int32_t> BoxOf(HocrWord const& word) {
  return {word.left, word.top, word.right, word.bottom};
}

std::vector<sorrelin::WideString> TextsOf(HocrDocument const& document) {
  std::vector<sorrelin::WideString> texts;
  for (HocrWord const& word : document.words) texts.push_back(word.text);
  return texts;
}

std::string Nested(int levels) {
  std::string text;
  for (int i = 0; i < levels; ++i) text += "<a>";
  for (int i = 0; i < levels; ++i) text += "</a>";
  return text;
}

constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(ParseHocr, ReadsAPageAsAnEngineWritesIt) {
  Parsed const parsed = Parse(
      "<?xml version='1.0'?><!DOCTYPE html><html><body>"
      "<div class='ocr_page' id='page_1' title='image \"\"; bbox 0 0 2550 3300; ppageno 0; "
      "scan_res 300 300'><div class='ocr_carea'><p class='ocr_par'><span class='ocr_line' "
      "title='bbox 1 2 3 4'><span class='ocrx_word' id='word_1_1' title='bbox 36 92 618 184; "
      "x_wconf 96; x_fsize 12'>Hello</span> <span class='ocrx_word' id='word_1_2' "
      "title='bbox 640 92 900 184; x_wconf 90; x_fsize 14'>you</span></span></p></div></div>"
      "</body></html>");
  EXPECT_EQ(parsed.result, 1);
  EXPECT_THAT(TextsOf(parsed.document), ElementsAre(SORRELIN_TEXT("Hello"), SORRELIN_TEXT("you")));
  EXPECT_THAT(BoxOf(parsed.document.words[0]), ElementsAre(36, 92, 618, 184));
  EXPECT_EQ(parsed.document.words[0].font_size, 12);
  EXPECT_EQ(parsed.document.words[1].font_size, 14);
  EXPECT_EQ(parsed.document.width, 2550);
  EXPECT_EQ(parsed.document.height, 3300);
}

TEST(ParseHocr, ByteOrderMarkAtTheStartIsLeftOut) {
  sorrelin::WideString text(1, SORRELIN_TEXT('\uFEFF'));
  text += Wide(WordTag("bbox 1 2 3 4"));
  Parsed const parsed = Parse(text);
  EXPECT_EQ(parsed.result, 1);
  EXPECT_THAT(BoxOf(parsed.document.words.at(0)), ElementsAre(1, 2, 3, 4));
}

TEST(ParseHocr, SecondByteOrderMarkIsLeftOutToo) {
  EXPECT_EQ(Parse(SORRELIN_TEXT("\uFEFF\uFEFF<a/>")).result, 1);
}

TEST(ParseHocr, ThirdByteOrderMarkIsText) {
  EXPECT_EQ(Parse(SORRELIN_TEXT("\uFEFF\uFEFF\uFEFF<a/>")).result, 0);
}

TEST(ParseHocr, EmptyTextIsAnEmptyDocument) {
  EXPECT_EQ(Parse(SORRELIN_TEXT("")).result, 1);
  EXPECT_EQ(Parse(SORRELIN_TEXT("\uFEFF")).result, 1);
  EXPECT_EQ(Parse(SORRELIN_TEXT(" \n")).result, 1);
}

TEST(ParseHocr, NullTextIsAFailure) {
  HocrDocument document;
  EXPECT_EQ(ParseHocr(document, nullptr), 0);
}

TEST(ParseHocr, TextBeforeTheFirstTagIsAFailure) { EXPECT_EQ(Parse("text <a/>").result, 0); }

TEST(ParseHocr, TextThatIsNoXmlIsAFailure) {
  for (char const* text : {"plain", "<", "<a", "<a>", "<a b>", "<a b=c/>", "<a b='c/>", "<!--",
                           "<a>&#x110000;</a>", "<a>&#1</a>", "<![CDATA[", "<?xml", "</a>"}) {
    EXPECT_EQ(Parse(text).result, 0) << text;
  }
}

TEST(ParseHocr, FailedParseTakesNothing) {
  Parsed const parsed = Parse(WordTag("bbox 1 2 3 4") + "<a>");
  EXPECT_EQ(parsed.result, 0);
  EXPECT_THAT(parsed.document.words, IsEmpty());
}

TEST(ParseHocr, WordsBeforeAFailureInTheWalkStay) {
  Parsed const parsed = Parse(WordTag("bbox 1 2 3 4") + "<span class='ocrx_word' id='w'>y</span>");
  EXPECT_EQ(parsed.result, 0);
  EXPECT_THAT(TextsOf(parsed.document), ElementsAre(SORRELIN_TEXT("x")));
}

TEST(ParseHocr, SecondTextIsAddedToTheDocument) {
  HocrDocument document;
  EXPECT_EQ(ParseHocr(document, Wide(WordTag("", "one")).c_str()), 1);
  EXPECT_EQ(ParseHocr(document, Wide(WordTag("", "two")).c_str()), 1);
  EXPECT_THAT(TextsOf(document), ElementsAre(SORRELIN_TEXT("one"), SORRELIN_TEXT("two")));
}

TEST(ParseHocr, ThousandLevelsAreReadAndOneMoreIsAFailure) {
  EXPECT_EQ(Parse(Nested(1000)).result, 1);
  EXPECT_EQ(Parse(Nested(1001)).result, 0);
  EXPECT_EQ(Parse(Nested(1000)).result, 1);
}

TEST(ParseHocr, MillionOpenTagsAreAFailureAndNoCrash) {
  std::string text;
  for (int i = 0; i < 1000000; ++i) text += "<a>";
  EXPECT_EQ(Parse(text).result, 0);
}

TEST(ParseHocr, ClosedElementsDoNotCountAsLevels) {
  std::string text;
  for (int i = 0; i < 20000; ++i) text += "<a><b/>t</a>";
  EXPECT_EQ(Parse("<a>" + text + "</a>" + text).result, 1);
}

// Their low bytes are those of NUL, tab, blank, quotes, ampersand, slash, "<", "=", ">" and "?".
TEST(ParseHocr, CharactersPast255AreOrdinaryText) {
  sorrelin::WideString const text =
      SORRELIN_TEXT("\u0100\u0109\u2020\u2022\u2026\u2027\u012F\u043C\u203D\u203E\u203F\uFEFF");
  Parsed const parsed = Parse(
      SORRELIN_TEXT(
          "<\u043C \u0420='\u2022\u2027' c=\"ocrx_word\" id=\"\u2022\" title='\u2022 x_fsize 9'>") +
      text + SORRELIN_TEXT("</\u043C>"));
  EXPECT_EQ(parsed.result, 1);
  EXPECT_THAT(TextsOf(parsed.document), ElementsAre(text));
  EXPECT_EQ(parsed.document.words[0].font_size, 9);
}

TEST(ParseHocr, SurrogatePairsPassThrough) {
  Parsed const parsed = Parse(SORRELIN_TEXT("<a c='ocrx_word' id='' title=''>\xD83D\xDE00</a>"));
  EXPECT_THAT(TextsOf(parsed.document), ElementsAre(SORRELIN_TEXT("\xD83D\xDE00")));
}

TEST(ParseHocr, ReferencesBecomeUtf16) {
  EXPECT_EQ(OnlyWord(WordTag("", "&lt;&gt;&amp;&quot;&apos;&#39;")).text, SORRELIN_TEXT("<>&\"''"));
  EXPECT_EQ(OnlyWord(WordTag("", "&#233;&#x43C;&#xFFFD;")).text,
            SORRELIN_TEXT("\u00E9\u043C\uFFFD"));
  EXPECT_EQ(OnlyWord(WordTag("", "<b>&#x1F600;</b>")).text, SORRELIN_TEXT("\xD83D\xDE00"));
}

TEST(ParseHocr, ReferencesInAttributesAreResolved) {
  EXPECT_EQ(OnlyWord("<a c='ocrx&#x5F;word' id='w' title='bbox&#32;7'>t</a>").left, 7);
  EXPECT_EQ(Parse(SORRELIN_TEXT("<a c='ocrx_word' id='&#x10FFFF;' title=''/>")).result, 1);
}

TEST(HocrPage, ItsAttributeMayHaveAnyName) {
  Parsed const parsed = Parse("<p id='ocr_page' title='bbox 0 0 7 9; ppageno 0'/>");
  EXPECT_EQ(parsed.result, 1);
  EXPECT_THAT(parsed.document.page_widths, ElementsAre(Pair(0, 7)));
}

TEST(HocrPage, ClassIsComparedInFullAndInItsCase) {
  for (char const* name : {"OCR_PAGE", "ocr_page ", "ocr_pag", "ocr_pages", ""}) {
    Parsed const parsed = Parse("<p class='" + std::string(name) + "' title='bbox 0 0 7 9'/>");
    EXPECT_EQ(parsed.result, 1);
    EXPECT_THAT(parsed.document.page_widths, IsEmpty()) << name;
  }
}

TEST(HocrPage, SizeIsTheDistanceMinusTheOrigin) {
  HocrDocument const document = Parse(PageTag("bbox 10 10 110 60")).document;
  EXPECT_EQ(document.width, 90);
  EXPECT_EQ(document.height, 40);
}

TEST(HocrPage, SizeOfAnInvertedBoxUsesTheAbsoluteDistance) {
  HocrDocument const document = Parse(PageTag("bbox 110 60 10 10")).document;
  EXPECT_EQ(document.width, 100 - 110);
  EXPECT_EQ(document.height, 50 - 60);
}

TEST(HocrPage, SizesBeyond32BitsAreTheNearestBound) {
  HocrDocument const document =
      Parse(PageTag("bbox -2147483648 2147483647 2147483647 2147483647")).document;
  EXPECT_EQ(document.width, kMax);
  EXPECT_EQ(document.height, -kMax);
}

TEST(HocrPage, PageNumberAndResolutionAreReadAsZero) {
  HocrDocument const document =
      Parse(PageTag("bbox 0 0 10 20; ppageno 7; scan_res 300 300", WordTag(""))).document;
  EXPECT_THAT(document.page_widths, ElementsAre(Pair(0, 10)));
  EXPECT_THAT(document.page_heights, ElementsAre(Pair(0, 20)));
  EXPECT_THAT(document.page_resolutions, ElementsAre(Pair(0, 0)));
  EXPECT_EQ(document.resolution, 0);
  EXPECT_EQ(document.words.at(0).page, 0);
}

TEST(HocrPage, LaterPageReplacesTheEarlierUnderKeyZero) {
  HocrDocument const document = Parse(PageTag("bbox 0 0 10 20; ppageno 0", WordTag("", "a")) +
                                      PageTag("bbox 0 0 30 40; ppageno 1", WordTag("", "b")))
                                    .document;
  EXPECT_THAT(document.page_widths, ElementsAre(Pair(0, 30)));
  EXPECT_THAT(document.page_heights, ElementsAre(Pair(0, 40)));
  EXPECT_EQ(document.words.at(0).page, 0);
  EXPECT_EQ(document.words.at(1).page, 0);
}

// Without "ppageno " the cut starts at the fifth character of the title.
TEST(HocrPage, WithoutPageNumberTheTitleFromItsFifthCharacterIsRead) {
  HocrDocument const document = Parse(PageTag("bbox 10 10 110 60")).document;
  EXPECT_THAT(document.page_widths, ElementsAre(Pair(10, 90)));
  EXPECT_THAT(document.page_resolutions, ElementsAre(Pair(10, 10)));
}

TEST(HocrPage, WithoutBoxTheTitleFromItsFifthCharacterIsRead) {
  HocrDocument const document = Parse(PageTag("abcd1 2 30 40")).document;
  EXPECT_EQ(document.width, 29 - 1);
  EXPECT_EQ(document.height, 38 - 2);
}

TEST(HocrPage, TitleOfFourCharactersIsReadAsNothing) {
  Parsed const parsed = Parse(PageTag("abcd"));
  EXPECT_EQ(parsed.result, 1);
  EXPECT_THAT(parsed.document.page_widths, ElementsAre(Pair(0, 0)));
}

TEST(HocrPage, TitleOfThreeCharactersIsAFailure) {
  EXPECT_EQ(Parse(PageTag("abc")).result, 0);
  EXPECT_EQ(Parse(PageTag("")).result, 0);
}

TEST(HocrPage, MissingNumbersAreZero) {
  HocrDocument const document = Parse(PageTag("bbox 5 6 20")).document;
  EXPECT_EQ(document.width, 15 - 5);
  EXPECT_EQ(document.height, 6 - 6);
  EXPECT_EQ(Parse(PageTag("bbox ")).document.width, 0);
}

TEST(HocrPage, TwoBlanksMakeAnEmptyNumber) {
  HocrDocument const document = Parse(PageTag("bbox  1 2 3")).document;
  EXPECT_EQ(document.width, 2);       // edges 0 and 2
  EXPECT_EQ(document.height, 2 - 1);  // edges 1 and 3
}

TEST(HocrPage, MissingTitleIsAFailure) {
  EXPECT_EQ(Parse("<p class='ocr_page'/>").result, 0);
  EXPECT_EQ(Parse("<p class='ocr_page' Title='bbox 0 0 1 1'/>").result, 0);
}

TEST(HocrPage, NestedPageIsTakenToo) {
  HocrDocument const document =
      Parse(PageTag("bbox 0 0 10 20; ppageno 0", PageTag("bbox 0 0 3 4; ppageno 0"))).document;
  EXPECT_THAT(document.page_widths, ElementsAre(Pair(0, 3)));
}

TEST(HocrPage, ResetsTheWordState) {
  HocrDocument document;
  document.word_state = 7;
  ParseHocr(document, Wide(PageTag("bbox 0 0 1 1")).c_str());
  EXPECT_EQ(document.word_state, 0u);
}

TEST(HocrLine, KeepsTheWordStateWhichAnotherAttributeResets) {
  for (char const* name : {"ocr_line", "ocr_header", "ocr_caption"}) {
    HocrDocument document;
    document.word_state = 7;
    ParseHocr(document, Wide("<a><b c='" + std::string(name) + "' id='x'/></a>").c_str());
    EXPECT_EQ(document.word_state, 7u) << name;
    ParseHocr(document, SORRELIN_TEXT("<a c='ocr_par'/>"));
    EXPECT_EQ(document.word_state, 0u);
  }
}

TEST(HocrLine, EndsTheSearchOfItsAttributes) {
  for (char const* name : {"ocr_line", "ocr_header", "ocr_caption"}) {
    Parsed const parsed =
        Parse("<a b='" + std::string(name) + "' class='ocrx_word'>" + WordTag("") + "</a>");
    EXPECT_EQ(parsed.result, 1);
    EXPECT_THAT(TextsOf(parsed.document), ElementsAre(SORRELIN_TEXT("x"))) << name;
  }
}

TEST(HocrWord, OrdinaryTitle) {
  HocrWord const word = OnlyWord(WordTag("bbox 100 100 300 200; x_wconf 90"));
  EXPECT_THAT(BoxOf(word), ElementsAre(100, 100, 300, 200));
  EXPECT_EQ(word.font_size, 10);
}

TEST(HocrWord, WithoutBoxAndFontSize) {
  HocrWord const word = OnlyWord(WordTag("x_wconf 90"));
  EXPECT_THAT(BoxOf(word), ElementsAre(0, 0, 0, 0));
  EXPECT_EQ(word.font_size, 10);
}

TEST(HocrWord, KeywordsAreWholeTokens) {
  HocrWord const word = OnlyWord(WordTag("xbbox 9 9 9 9 x_fsize; 9 bbox 1 2 3 4"));
  EXPECT_THAT(BoxOf(word), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(word.font_size, 10);
}

TEST(HocrWord, FirstOfTwoBoxesCounts) {
  EXPECT_THAT(BoxOf(OnlyWord(WordTag("bbox 1 2 3 4 bbox 5 6 7 8"))), ElementsAre(1, 2, 3, 4));
}

TEST(HocrWord, MissingNumbersAreZero) {
  EXPECT_THAT(BoxOf(OnlyWord(WordTag("bbox 1 2"))), ElementsAre(1, 2, 0, 0));
  EXPECT_THAT(BoxOf(OnlyWord(WordTag("bbox"))), ElementsAre(0, 0, 0, 0));
  EXPECT_EQ(OnlyWord(WordTag("x_fsize")).font_size, 0);
}

TEST(HocrWord, NumbersEndAtTheFirstOtherCharacter) {
  EXPECT_THAT(BoxOf(OnlyWord(WordTag("bbox -3 +4 5.9 six"))), ElementsAre(-3, 4, 5, 0));
  EXPECT_EQ(OnlyWord(WordTag("x_fsize \t 12pt")).font_size, 0);
  EXPECT_EQ(OnlyWord(WordTag("x_fsize \t12pt")).font_size, 12);
}

TEST(HocrWord, NumbersBeyond32BitsAreTheNearestBound) {
  EXPECT_THAT(BoxOf(OnlyWord(WordTag("bbox 2147483648 -2147483649 99999999999999999999 -0"))),
              ElementsAre(kMax, kMin, kMax, 0));
}

TEST(HocrWord, NestedMarkupAddsNothingToItsText) {
  EXPECT_EQ(OnlyWord(WordTag("", "<b>Hel</b><i>lo</i>")).text, SORRELIN_TEXT("Hello"));
  EXPECT_EQ(OnlyWord(WordTag("", "a<b>b<i>c</i></b>d<br/><![CDATA[<e>]]>")).text,
            SORRELIN_TEXT("abcd<e>"));
}

TEST(HocrWord, EmptyWordHasNoText) { EXPECT_EQ(OnlyWord(WordTag("", "")).text, SORRELIN_TEXT("")); }

TEST(HocrWord, WithoutIdOrTitleIsAFailure) {
  EXPECT_EQ(Parse("<a class='ocrx_word' title='bbox 1 2 3 4'>x</a>").result, 0);
  EXPECT_EQ(Parse("<a class='ocrx_word' id='w'>x</a>").result, 0);
}

TEST(HocrWord, OutsideAPageHasPageMinusOne) { EXPECT_EQ(OnlyWord(WordTag("")).page, -1); }

TEST(HocrWord, BehindAPageElementStillHasItsPage) {
  EXPECT_EQ(OnlyWord(PageTag("bbox 0 0 1 1; ppageno 0") + WordTag("")).page, 0);
}

TEST(HocrWord, DirectlyBelowThePageIsTaken) {
  EXPECT_EQ(OnlyWord(PageTag("bbox 0 0 9 9; ppageno 0", WordTag("bbox 1 2 3 4"))).left, 1);
}

TEST(HocrWord, WithinAWordIsTakenToo) {
  Parsed const parsed = Parse(WordTag("", std::string("a") + WordTag("", "b") + "c"));
  EXPECT_THAT(TextsOf(parsed.document), ElementsAre(SORRELIN_TEXT("abc"), SORRELIN_TEXT("b")));
}

TEST(HocrWord, InCommentsInstructionsAndDoctypeIsLeftOut) {
  std::string const word = WordTag("");
  Parsed const parsed =
      Parse("<!DOCTYPE a [" + word + "]><!--" + word + "--><?pi " + word + "?><a><!--" + word +
            "--><?pi " + word + "?><![CDATA[" + word + "]]></a>");
  EXPECT_EQ(parsed.result, 1);
  EXPECT_THAT(parsed.document.words, IsEmpty());
}

TEST(HocrWord, InElementsWithoutAttributesIsFound) {
  EXPECT_EQ(OnlyWord("<html><body><p>" + WordTag("", "deep") + "</p></body></html>").text,
            SORRELIN_TEXT("deep"));
}

TEST(ParseHocr, TotalStepIsLeftAlone) {
  HocrDocument document;
  document.total_step = 5;
  EXPECT_EQ(ParseHocr(document, SORRELIN_TEXT("<a/><b/>")), 1);
  EXPECT_EQ(document.total_step, 5u);
}

}  // namespace

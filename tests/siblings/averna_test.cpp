// The OCR engine through the binding that the library has for it: words, boxes, failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <siblings/averna/averna.h>
#include <sorrelin/frame/pdf.h>
#include <sorrelin/ocr/engine_binding.h>
#include <sorrelin/ocr/hocr.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/english_page.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using sorrelin::HocrDocument;
using sorrelin::HocrWord;
using sorrelin::WideString;
using test::EnglishPage;
using test::PlacedWord;

EnglishPage const& Page() {
  static EnglishPage const page = test::ReadEnglishPage();
  return page;
}

// The engine as its own library, loaded once.
sorrelin::OcrEngineBinding& Engine() {
  static sorrelin::OcrEngineBinding binding;
  DWORD error = 0;
  sorrelin::EnsureOcrEngine(binding, sorrelin::ToWide(AVERNA).c_str(), error);
  return binding;
}

int64_t Option(char const* languages) {
  return static_cast<int64_t>(reinterpret_cast<intptr_t>(languages));
}

// The engine's answer to one bitmap.
struct Answer {
  int result = 0;
  bool has_text = false;
  WideString text;
};

Answer Ask(HDIB dib, char const* languages = nullptr) {
  Answer answer;
  WCHAR stale = 0;
  WCHAR* text = &stale;
  answer.result = Engine().recognize(dib, &text, Option(languages), 0, 1, 0);
  answer.has_text = text != nullptr;
  if (text != nullptr) answer.text = text;
  Engine().free_text(text);
  return answer;
}

HocrDocument Recognize(HDIB dib, char const* languages = nullptr) {
  HocrDocument document;
  Answer const answer = Ask(dib, languages);
  EXPECT_EQ(answer.result, AVERNA_OK);
  EXPECT_EQ(sorrelin::ParseHocr(document, answer.text.c_str()), 1);
  return document;
}

std::string Narrow(WideString const& text) {
  std::string narrow;
  for (WCHAR const c : text) narrow += c < 128 ? static_cast<char>(c) : '?';
  return narrow;
}

// The middle of the recognised box is in the word's area.
bool LiesOn(HocrWord const& found, PlacedWord const& placed) {
  int32_t const x = (found.left + found.right) / 2;
  int32_t const y = (found.top + found.bottom) / 2;
  return x >= placed.left && x <= placed.right && y >= placed.top && y <= placed.bottom;
}

bool IsInk(LONG x, LONG y) { return Page().At(x, y) < 128; }

// The box holds the word's ink: all but one dark pixel in fifty of the word's area.
bool CoversInk(HocrWord const& found, PlacedWord const& placed) {
  int ink = 0;
  int inside = 0;
  for (LONG y = placed.top; y < placed.bottom; ++y) {
    for (LONG x = placed.left; x < placed.right; ++x) {
      if (!IsInk(x, y)) continue;
      ++ink;
      if (x >= found.left && x < found.right && y >= found.top && y < found.bottom) ++inside;
    }
  }
  return ink > 0 && inside * 50 >= ink * 49;
}

// The box is no larger than the word's area, but for a few pixels.
bool IsTight(HocrWord const& found, PlacedWord const& placed) {
  constexpr LONG kSlack = 4;
  return found.left >= placed.left - kSlack && found.right <= placed.right + kSlack &&
         found.top >= placed.top - kSlack && found.bottom <= placed.bottom + kSlack;
}

// Words of the page that were read letter by letter in their place.
int RightWords(HocrDocument const& document) {
  return static_cast<int>(
      std::count_if(Page().words.begin(), Page().words.end(), [&](PlacedWord const& placed) {
        return std::any_of(document.words.begin(), document.words.end(), [&](HocrWord const& word) {
          return Narrow(word.text) == placed.text && LiesOn(word, placed) &&
                 CoversInk(word, placed) && IsTight(word, placed);
        });
      }));
}

int WordsNeeded() { return static_cast<int>(Page().words.size() * 95 / 100); }

test::Block BlankDib(LONG width, LONG height, LONG per_metre = 11811) {
  test::DibSpec spec;
  spec.width = width;
  spec.height = height;
  spec.bits = 8;
  spec.x_per_metre = per_metre;
  spec.y_per_metre = per_metre;
  return test::MakeDib(spec, [](LONG, LONG) { return 255u; });
}

TEST(EnglishPage, HasAHundredWordsWithInk) {
  EXPECT_GE(Page().words.size(), 100u);
  for (PlacedWord const& word : Page().words) {
    HocrWord everything;
    everything.right = test::kPageWidth;
    everything.bottom = test::kPageHeight;
    EXPECT_TRUE(CoversInk(everything, word)) << word.text;
  }
}

TEST(Averna, ReadsAGreyPageWithItsBoxesAndFontSizes) {
  HocrDocument const document = Recognize(test::MakePageDib(Page(), 8));
  EXPECT_GE(RightWords(document), WordsNeeded());
  EXPECT_EQ(document.width, test::kPageWidth);
  EXPECT_EQ(document.height, test::kPageHeight);
  int const right_sizes = static_cast<int>(std::count_if(
      document.words.begin(), document.words.end(),
      [](HocrWord const& word) { return std::abs(word.font_size - test::kPageFontSize) <= 2; }));
  EXPECT_GE(right_sizes, WordsNeeded());
}

TEST(Averna, ReadsABilevelPage) {
  EXPECT_GE(RightWords(Recognize(test::MakePageDib(Page(), 1))), WordsNeeded());
}

TEST(Averna, ReadsAColorPage) {
  EXPECT_GE(RightWords(Recognize(test::MakePageDib(Page(), 24))), WordsNeeded());
}

TEST(Averna, FontSizesFollowTheResolution) {
  test::Block const dib = test::MakePageDib(Page(), 8);
  auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
  header->biXPelsPerMeter = header->biYPelsPerMeter = 2 * test::kPageDotsPerMetre;
  GlobalUnlock(dib);
  HocrDocument const document = Recognize(dib);
  ASSERT_FALSE(document.words.empty());
  EXPECT_NEAR(document.words[0].font_size, test::kPageFontSize / 2, 1);
}

TEST(Averna, BindingDeliversItsText) {
  DWORD error = 0;
  test::Block const dib = BlankDib(200, 100);
  WCHAR* const text = sorrelin::RecognizeDIB(Engine(), dib, nullptr, 0, 0, error);
  ASSERT_NE(text, nullptr);
  HocrDocument document;
  EXPECT_EQ(sorrelin::ParseHocr(document, text), 1);
  std::free(text);
}

TEST(Averna, BlankPageHasAPageAndNoWords) {
  HocrDocument const document = Recognize(BlankDib(400, 300));
  EXPECT_TRUE(document.words.empty());
  EXPECT_EQ(document.page_widths.at(0), 400);
  EXPECT_EQ(document.page_heights.at(0), 300);
}

TEST(Averna, TextIsAWholeXhtmlDocument) {
  std::string const text = Narrow(Ask(BlankDib(50, 50)).text);
  EXPECT_EQ(text.rfind("<!DOCTYPE html ", 0), 0u);
  EXPECT_NE(text.find("<meta name='ocr-system'"), std::string::npos);
  EXPECT_NE(text.find("</html>\n"), std::string::npos);
}

TEST(Averna, LanguageOfTheOptionIsUsed) {
  EXPECT_EQ(Ask(BlankDib(50, 50), "eng").result, AVERNA_OK);
  EXPECT_EQ(Ask(BlankDib(50, 50), "eng+eng").result, AVERNA_OK);
}

TEST(Averna, MissingLanguageFails) {
  for (char const* languages : {"xxx", "eng+xxx", "xxx+eng"}) {
    Answer const answer = Ask(BlankDib(50, 50), languages);
    EXPECT_EQ(answer.result, AVERNA_NO_LANGUAGE) << languages;
    EXPECT_FALSE(answer.has_text);
  }
}

TEST(Averna, EmptyLanguageListIsRefused) {
  EXPECT_EQ(Ask(BlankDib(50, 50), "").result, AVERNA_BAD_ARGUMENT);
}

TEST(Averna, BadBitmapsAreRefused) {
  EXPECT_EQ(Ask(nullptr).result, AVERNA_BAD_ARGUMENT);
  EXPECT_EQ(Ask(INVALID_HANDLE_VALUE).result, AVERNA_BAD_BITMAP);
  EXPECT_EQ(Ask(test::Block(GlobalAlloc(GHND, 39))).result, AVERNA_BAD_BITMAP);
  EXPECT_EQ(Ask(test::Block(GlobalAlloc(GHND, 400))).result, AVERNA_BAD_BITMAP);
}

TEST(Averna, NullTextPointerIsRefused) {
  EXPECT_EQ(Engine().recognize(BlankDib(5, 5), nullptr, 0, 0, 1, 0), AVERNA_BAD_ARGUMENT);
}

TEST(Averna, FreeingNullIsHarmless) { EXPECT_EQ(Engine().free_text(nullptr), 0); }

// A missing language, an odd resolution and pictures that are too small all make the engine talk.
TEST(Averna, WritesNothing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Ask(BlankDib(50, 50), "xxx");
  Ask(BlankDib(50, 50), "eng+xxx");
  Ask(BlankDib(1, 1));
  Ask(BlankDib(300, 200, 200));
  Ask(BlankDib(300, 200, 0));
  Ask(BlankDib(300, 200, 2000000000));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace

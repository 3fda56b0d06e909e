// The optional entry points of the OCR engine: one recognition, all forms of its result.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <siblings/averna/averna.h>
#include <tests/support/english_page.h>

#include <algorithm>
#include <string>

namespace {

using test::EnglishPage;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr AVERNA_PAGE kUsual = {3, 0, nullptr, nullptr};

EnglishPage const& Page() {
  static EnglishPage const page = test::ReadEnglishPage();
  return page;
}

// The first two lines of the page, which are recognised sooner than all of it.
constexpr LONG kTopHeight = 336;

test::Block TopOfPage() {
  test::DibSpec spec;
  spec.width = test::kPageWidth;
  spec.height = kTopHeight;
  spec.bits = 8;
  spec.x_per_metre = spec.y_per_metre = test::kPageDotsPerMetre;
  return test::MakeDib(spec, [](LONG x, LONG y) { return DWORD{Page().At(x, y)}; });
}

AVERNA_ENGINE* Open(char const* languages) {
  AVERNA_ENGINE* engine = nullptr;
  EXPECT_EQ(AvernaOpen(languages, &engine, nullptr, 0), AVERNA_OK);
  return engine;
}

// An engine for English that has recognised the top of the page.
AVERNA_ENGINE* Recognized() {
  static AVERNA_ENGINE* const engine = [] {
    AVERNA_ENGINE* const opened = Open("eng");
    EXPECT_EQ(AvernaRecognize(opened, TopOfPage(), &kUsual), AVERNA_OK);
    return opened;
  }();
  return engine;
}

std::string Result(int format, int number = 0) {
  char* data = nullptr;
  uint64_t size = 0;
  EXPECT_EQ(AvernaGetResult(Recognized(), format, number, &data, &size), AVERNA_OK);
  std::string const result(data, static_cast<size_t>(size));
  EXPECT_EQ(data[size], '\0');
  AvernaFreeData(data);
  return result;
}

// The page turned clockwise by so many quarters, black and white.
test::Block TurnedPage(int quarters) {
  test::DibSpec spec;
  bool const sideways = quarters % 2 == 1;
  spec.width = sideways ? test::kPageHeight : test::kPageWidth;
  spec.height = sideways ? test::kPageWidth : test::kPageHeight;
  spec.bits = 1;
  spec.x_per_metre = spec.y_per_metre = test::kPageDotsPerMetre;
  return test::MakeDib(spec, [&](LONG x, LONG y) -> DWORD {
    for (int i = 0; i < quarters; ++i) {
      // Where the pixel was before the last quarter turn.
      LONG const width = (quarters - i) % 2 == 1 ? test::kPageHeight : test::kPageWidth;
      LONG const old_x = y;
      y = width - 1 - x;
      x = old_x;
    }
    return Page().At(x, y) >= 128 ? 1u : 0u;
  });
}

test::Block BlankDib() {
  test::DibSpec spec;
  spec.width = spec.height = 200;
  spec.bits = 8;
  return test::MakeDib(spec, [](LONG, LONG) { return 255u; });
}

int32_t StopAtOnce(void*) { return 1; }

TEST(AvernaEngine, TextIsTheLinesOfThePage) {
  EXPECT_THAT(Result(AVERNA_TEXT),
              AllOf(StartsWith("The old harbour lies behind a long stone wall that keeps"),
                    HasSubstr("\nstorms away from the fishing boats.")));
}

TEST(AvernaEngine, MarkupHasTheNumberOfThePage) {
  EXPECT_THAT(Result(AVERNA_HOCR, 6),
              AllOf(HasSubstr("id='page_7'"), HasSubstr(">harbour<"), HasSubstr("x_fsize")));
  EXPECT_THAT(Result(AVERNA_ALTO, 6),
              AllOf(HasSubstr("<Page WIDTH=\"2550\""), HasSubstr("CONTENT=\"harbour\"")));
  EXPECT_THAT(Result(AVERNA_TSV, 6), AllOf(StartsWith("1\t7\t"), HasSubstr("\tharbour\n")));
}

TEST(AvernaEngine, DocumentIsOnePageOfInvisibleTextAsLargeAsThePicture) {
  std::string const pdf = Result(AVERNA_PDF);
  EXPECT_THAT(pdf, AllOf(StartsWith("%PDF-1."), HasSubstr("/MediaBox [0 0 612.00 80.64]"),
                         HasSubstr("/GlyphLessFont")));
  EXPECT_EQ(pdf.find("/Image "), std::string::npos);
  EXPECT_LT(pdf.size(), 12u << 10);
}

TEST(AvernaEngine, DocumentLeavesNoFile) {
  test::TempDir const folder;
  for (char const* const name : {"TMPDIR", "TMP"}) {
    setenv(name, folder.path().string().c_str(), 1);
  }
  Result(AVERNA_PDF);
  for (char const* const name : {"TMPDIR", "TMP"}) unsetenv(name);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(AvernaEngine, TurnIsTheClockwiseOneThatBringsTextUpright) {
  AVERNA_ENGINE* const engine = Open("osd");
  for (int quarters = 0; quarters < 4; ++quarters) {
    int32_t degrees = -1;
    float confidence = 0;
    EXPECT_EQ(AvernaFindOrientation(engine, TurnedPage(quarters), &degrees, &confidence),
              AVERNA_OK);
    EXPECT_EQ(degrees, (4 - quarters) % 4 * 90);
    EXPECT_GT(confidence, 5);
  }
  int32_t degrees = -1;
  float confidence = -1;
  EXPECT_EQ(AvernaFindOrientation(engine, BlankDib(), &degrees, &confidence), AVERNA_OK);
  EXPECT_EQ(degrees, 0);
  EXPECT_EQ(confidence, 0);
  AvernaClose(engine);
}

TEST(AvernaEngine, FirstMissingLanguageIsNamed) {
  struct {
    char const* list;
    char const* missing;
  } const kRows[] = {{"xxx", "xxx"}, {"eng+xxx", "xxx"}, {"yyy+eng+xxx", "yyy"}};
  for (auto const& row : kRows) {
    AVERNA_ENGINE* engine = nullptr;
    char missing[8] = "";
    EXPECT_EQ(AvernaOpen(row.list, &engine, missing, sizeof missing), AVERNA_NO_LANGUAGE);
    EXPECT_STREQ(missing, row.missing);
    EXPECT_EQ(engine, nullptr);
  }
  AVERNA_ENGINE* engine = nullptr;
  char cut[3] = "";
  AvernaOpen("xxx", &engine, cut, sizeof cut);
  EXPECT_STREQ(cut, "xx");
}

TEST(AvernaEngine, StopsWhenTheTimeIsUpOrTheCallerSaysSo) {
  AVERNA_ENGINE* const engine = Open("eng");
  test::Block const dib = TopOfPage();
  AVERNA_PAGE const hurried = {3, 1, nullptr, nullptr};
  EXPECT_EQ(AvernaRecognize(engine, dib, &hurried), AVERNA_STOPPED);
  AVERNA_PAGE const cancelled = {3, 0, StopAtOnce, nullptr};
  EXPECT_EQ(AvernaRecognize(engine, dib, &cancelled), AVERNA_STOPPED);
  char* data = nullptr;
  uint64_t size = 0;
  EXPECT_EQ(AvernaGetResult(engine, AVERNA_TEXT, 0, &data, &size), AVERNA_BAD_ARGUMENT);
  EXPECT_EQ(data, nullptr);
  AvernaClose(engine);
}

TEST(AvernaEngine, BadArgumentsAreRefused) {
  AVERNA_ENGINE* engine = Open("eng");
  AVERNA_PAGE const unknown = {0, 0, nullptr, nullptr};
  test::Block const dib = BlankDib();
  char* data = nullptr;
  uint64_t size = 0;
  EXPECT_EQ(AvernaRecognize(engine, dib, &unknown), AVERNA_BAD_ARGUMENT);
  EXPECT_EQ(AvernaRecognize(engine, nullptr, &kUsual), AVERNA_BAD_ARGUMENT);
  EXPECT_EQ(AvernaRecognize(nullptr, dib, &kUsual), AVERNA_BAD_ARGUMENT);
  EXPECT_EQ(AvernaRecognize(engine, INVALID_HANDLE_VALUE, &kUsual), AVERNA_BAD_BITMAP);
  EXPECT_EQ(AvernaGetResult(Recognized(), 6, 0, &data, &size), AVERNA_BAD_ARGUMENT);
  AvernaClose(engine);
  EXPECT_EQ(AvernaOpen("", &engine, nullptr, 0), AVERNA_BAD_ARGUMENT);
  EXPECT_EQ(AvernaOpen("eng", nullptr, nullptr, 0), AVERNA_BAD_ARGUMENT);
  EXPECT_EQ(AvernaClose(nullptr), 0);
  EXPECT_EQ(AvernaFreeData(nullptr), 0);
}

}  // namespace

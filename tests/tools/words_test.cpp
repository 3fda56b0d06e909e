// The words of pictures, as the program prints them.
#include "tests/support/english_page.h"
#include "tests/tools/read_fixture.h"

namespace test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

EnglishPage const& Page() {
  static EnglishPage const page = ReadEnglishPage();
  return page;
}

struct PrintedWord {
  std::string text;
  int page = 0;
  int left = 0, top = 0, right = 0, bottom = 0;
  int font_size = 0;
};

// What is in a line of the program; the texts of the test have nothing that is escaped.
PrintedWord ParseLine(std::string const& line, std::string const& file) {
  PrintedWord word;
  char text[64] = "";
  std::string const format = "{\"file\": \"" + file +
                             "\", \"page\": %d, \"text\": \"%63[^\"]\", \"box\": [%d, %d, %d, %d], "
                             "\"font_size\": %d}";
  EXPECT_EQ(std::sscanf(line.c_str(), format.c_str(), &word.page, text, &word.left, &word.top,
                        &word.right, &word.bottom, &word.font_size),
            7)
      << line;
  word.text = text;
  return word;
}

class WordsVerb : public ReadTest {
 protected:
  void WriteEnglish(std::string const& name) const {
    PngForm form;
    form.width = kPageWidth;
    form.height = kPageHeight;
    form.x_per_metre = form.y_per_metre = kPageDotsPerMetre;
    WritePng(Path(name), form, [](int x, int y, int) { return unsigned{Page().At(x, y)}; });
  }
  void WriteEnglishTiff(std::string const& name, size_t pages) const {
    TiffPage form;
    form.width = kPageWidth;
    form.height = kPageHeight;
    form.x_resolution = form.y_resolution = kPageDpi;
    WriteTiff(Path(name), std::vector<TiffPage>(pages, form),
              [](int, int x, int y, int) { return Page().At(x, y) < 128 ? 1u : 0u; });
  }
  ProgramResult Words(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "words");
    return Run(std::move(arguments));
  }
  static std::vector<std::string> LinesOf(std::string const& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }
};

// The word's box is at the place where the renderer put the word, and there is ink in it.
bool LiesOn(PrintedWord const& word, PlacedWord const& placed) {
  int const x = (word.left + word.right) / 2, y = (word.top + word.bottom) / 2;
  return x >= placed.left && x <= placed.right && y >= placed.top && y <= placed.bottom;
}

bool HasInk(PrintedWord const& word) {
  for (int y = word.top; y < word.bottom; ++y) {
    for (int x = word.left; x < word.right; ++x) {
      if (Page().At(x, y) < 128) return true;
    }
  }
  return false;
}

TEST_F(WordsVerb, NinetyFiveOfAHundredWordsAreRightAndInTheirPlace) {
  WriteEnglish("page.png");
  ProgramResult const result = Words({Path("page.png")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.err, "");
  size_t right = 0;
  for (std::string const& line : LinesOf(result.out)) {
    PrintedWord const word = ParseLine(line, Path("page.png"));
    EXPECT_EQ(word.page, 1);
    EXPECT_NEAR(word.font_size, kPageFontSize, 2) << line;
    bool const found = std::any_of(
        Page().words.begin(), Page().words.end(),
        [&](PlacedWord const& placed) { return placed.text == word.text && LiesOn(word, placed); });
    right += found && HasInk(word) ? 1 : 0;
  }
  ASSERT_GE(Page().words.size(), 90u);
  EXPECT_GE(right * 100, Page().words.size() * 95);
}

TEST_F(WordsVerb, TextHasTheLinesOfThePage) {
  WriteEnglish("page.png");
  ProgramResult const result = Words({"--text", Path("page.png")});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  std::vector<std::string> const expected = LinesOf(ReadEnglishText());
  std::vector<std::string> const lines = LinesOf(result.out);
  ASSERT_EQ(lines.size(), expected.size());
  size_t same = 0;
  for (size_t i = 0; i < lines.size(); ++i) same += lines[i] == expected[i] ? 1 : 0;
  EXPECT_GE(same + 2, lines.size()) << result.out;
}

TEST_F(WordsVerb, PagesOfAFileAreCountedAndTextsPartedByAFormFeed) {
  WriteEnglishTiff("two.tif", 2);
  std::vector<std::string> const lines = LinesOf(Words({Path("two.tif")}).out);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(ParseLine(lines.front(), Path("two.tif")).page, 1);
  EXPECT_EQ(ParseLine(lines.back(), Path("two.tif")).page, 2);
  std::string const text = Words({"--text", "--language", "eng", Path("two.tif")}).out;
  size_t const feed = text.find("\n\f");
  ASSERT_NE(feed, std::string::npos);
  EXPECT_EQ(text.substr(0, feed + 1), text.substr(feed + 2));
}

TEST_F(WordsVerb, PageWithoutWordsPrintsNothing) {
  PngForm form;
  form.width = form.height = 200;
  WritePng(Path("blank.png"), form, [](int, int, int) { return 255u; });
  for (std::string const option : {"--text", "--language=eng"}) {
    ProgramResult const result = Words({option, Path("blank.png")});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out + result.err, "");
  }
}

TEST_F(WordsVerb, LanguageIsHandedThroughAndNamedWhenItIsMissing) {
  WriteEnglish("page.png");
  ProgramResult const result = Words({"--language", "eng+nowhere", Path("page.png")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("Tesseract's data for \"nowhere\" are not installed"));
  EXPECT_EQ(Words({"--language", "", Path("page.png")}).exit_code, 2);
}

TEST_F(WordsVerb, BadFilesAreNamedAndTheOthersRead) {
  WriteEnglishTiff("page.tif", 1);
  WriteAll(Path("bad.png"), ToBytes("this is no picture at all, but it is long enough"));
  std::filesystem::create_directory(Path("folder"));
  ProgramResult const result =
      Words({Path("bad.png"), Path("missing.png"), Path("folder"), Path("page.tif")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr(Path("bad.png") + ": is not a picture"));
  EXPECT_THAT(result.err, HasSubstr(Path("missing.png") + ": No such file"));
  EXPECT_THAT(result.err, HasSubstr(Path("folder") + ": Is a directory (name the files in it)"));
  EXPECT_THAT(result.out, StartsWith("{\"file\": \"" + Path("page.tif")));
}

TEST_F(WordsVerb, MissingOrUnusableEngineIsNamed) {
  WriteEnglishTiff("page.tif", 1);
  std::filesystem::copy_file(SORRELIN_PLATFORM_LIBRARY, Path(SORRELIN_PLATFORM_SONAME));
  for (bool const present : {false, true}) {
    if (present) WriteAll(Path("libaverna.so"), ToBytes("no library"));
    ProgramResult const result = RunProgram({SORRELIN_TOOL, "words", Path("page.tif")}, {},
                                            {"LD_LIBRARY_PATH=" + directory_.path().string()});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.err, HasSubstr("install the package sorrelin-ocr"));
  }
}

TEST_F(WordsVerb, ResultThatCannotBeWrittenIsAFailure) {
  WriteEnglishTiff("page.tif", 1);
  ProgramResult const result = RunProgram(
      {"sh", "-c", "exec \"$0\" words \"$1\" >/dev/full", SORRELIN_TOOL, Path("page.tif")});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("standard output: cannot be written: No space left on device"));
}

}  // namespace
}  // namespace test

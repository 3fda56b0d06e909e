// Pages of two lines of English text, which are recognised sooner than whole ones, and looks at the
// text of documents.
#ifndef TESTS_TOOLS_OCR_FIXTURE_H_
#define TESTS_TOOLS_OCR_FIXTURE_H_

#include "tests/support/english_page.h"
#include "tests/tools/append_fixture.h"

namespace test {

// A word that pdftotext finds, in points from the top left corner of the page.
struct FoundWord {
  std::string text;
  double left = 0, top = 0, right = 0, bottom = 0;
};

class OcrTest : public AppendTest {
 protected:
  static constexpr double kRadians = 3.14159265358979 / 180;  // a degree
  static constexpr int kTop = 336;                            // rows of the page's first two lines

  static EnglishPage const& Page() {
    static EnglishPage const page = ReadEnglishPage();
    return page;
  }

  // The lines as a picture in grey, turned clockwise by so many quarters.
  static PixPtr Lines(int quarters = 0) {
    PixPtr pix(pixCreate(kPageWidth, kTop, 8));
    for (int y = 0; y < kTop; ++y) {
      for (int x = 0; x < kPageWidth; ++x) pixSetPixel(pix.get(), x, y, Page().At(x, y));
    }
    pix.reset(pixRotateOrth(pix.get(), quarters));
    pixSetResolution(pix.get(), kPageDpi, kPageDpi);
    return pix;
  }

  static PixPtr Blank() {
    PixPtr pix(pixCreate(400, 300, 8));
    pixSetAll(pix.get());
    pixSetResolution(pix.get(), kPageDpi, kPageDpi);
    return pix;
  }

  // What another program prints; it must succeed.
  static std::string OutputOf(std::vector<std::string> arguments) {
    ProgramResult const result = RunProgram(std::move(arguments));
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return result.out;
  }
  std::string TextOf(std::string const& name) const {
    return OutputOf({"pdftotext", Path(name), "-"});
  }

  std::vector<FoundWord> WordsOf(std::string const& name) const {
    std::istringstream lines(OutputOf({"pdftotext", "-bbox", Path(name), "-"}));
    std::vector<FoundWord> words;
    for (std::string line; std::getline(lines, line);) {
      FoundWord word;
      char text[64] = "";
      if (std::sscanf(line.c_str(),
                      " <word xMin=\"%lf\" yMin=\"%lf\" xMax=\"%lf\" yMax=\"%lf\">%63[^<]",
                      &word.left, &word.top, &word.right, &word.bottom, text) == 5) {
        word.text = text;
        words.push_back(word);
      }
    }
    return words;
  }

  // The words of the two lines, in points.
  static std::vector<FoundWord> ExpectedWords() {
    constexpr double kScale = 72.0 / kPageDpi;
    std::vector<FoundWord> words;
    for (PlacedWord const& word : Page().words) {
      if (word.bottom > kTop) continue;
      words.push_back({word.text, static_cast<double>(word.left) * kScale,
                       static_cast<double>(word.top) * kScale,
                       static_cast<double>(word.right) * kScale,
                       static_cast<double>(word.bottom) * kScale});
    }
    return words;
  }

  struct Typesetting {
    std::string font = "DejaVu Sans";
    std::string writing = "horizontal";
    int height = 600;  // pixels
  };
  // Writes a page of text, NAME.tif, and returns its words as they are seen from left to right.
  std::vector<FoundWord> RenderText(std::string const& name, std::string const& text,
                                    Typesetting const& style) const {
    WriteAll(Path("text.txt"), ToBytes(text + "\n"));
    RunProgram({"text2image", "--text=" + Path("text.txt"), "--outputbase=" + Path(name),
                "--font=" + style.font, "--writing_mode=" + style.writing,
                "--ysize=" + std::to_string(style.height), "--xsize=2480", "--resolution=300",
                "--margin=150", "--ptsize=14", "--fonts_dir=/usr/share/fonts/truetype",
                "--degrade_image=false", "--rotate_image=false"});
    return BoxedWords(Path(name + ".box"), style.height);
  }

  // A box file has a letter a line, with its sides in pixels from the lower left corner.
  static std::vector<FoundWord> BoxedWords(std::string const& name, double height) {
    constexpr double kScale = 72.0 / kPageDpi;
    std::vector<FoundWord> words(1);
    std::ifstream file(name);
    for (std::string line; std::getline(file, line);) {
      char letter[8] = "";
      double left = 0, bottom = 0, right = 0, top = 0;
      bool const is_letter = std::sscanf(line.c_str(), "%7[^ \t] %lf %lf %lf %lf", letter, &left,
                                         &bottom, &right, &top) == 5;
      FoundWord& word = words.back();
      FoundWord const box = {letter, left * kScale, (height - top) * kScale, right * kScale,
                             (height - bottom) * kScale};
      if (!is_letter) {
        if (!word.text.empty()) words.emplace_back();
      } else if (word.text.empty()) {
        word = box;
      } else {
        word = {word.text + letter, std::min(word.left, box.left), std::min(word.top, box.top),
                std::max(word.right, box.right), std::max(word.bottom, box.bottom)};
      }
    }
    if (words.back().text.empty()) words.pop_back();
    return words;
  }

  // The lines turned clockwise about the middle of a larger sheet, and the boxes around the words.
  static PixPtr TiltedLines(double degrees) {
    PixPtr pix(pixRotate(Lines().get(), static_cast<float>(degrees * kRadians), L_ROTATE_AREA_MAP,
                         L_BRING_IN_WHITE, kPageWidth, kTop));
    pixSetResolution(pix.get(), kPageDpi, kPageDpi);
    return pix;
  }
  static std::vector<FoundWord> TiltedWords(double degrees, PixPtr const& sheet) {
    constexpr double kScale = 72.0 / kPageDpi;
    double const cosine = std::cos(degrees * kRadians), sine = std::sin(degrees * kRadians);
    double const x0 = kPageWidth * kScale / 2, y0 = kTop * kScale / 2;
    double const middle_x = pixGetWidth(sheet.get()) * kScale / 2;
    double const middle_y = pixGetHeight(sheet.get()) * kScale / 2;
    std::vector<FoundWord> words = ExpectedWords();
    for (FoundWord& word : words) {
      double const x = (word.left + word.right) / 2 - x0, y = (word.top + word.bottom) / 2 - y0;
      double const width = word.right - word.left, height = word.bottom - word.top;
      double const across = (width * cosine + height * sine) / 2;
      double const down = (width * sine + height * cosine) / 2;
      double const to_x = middle_x + x * cosine - y * sine;
      double const to_y = middle_y + x * sine + y * cosine;
      word = {word.text, to_x - across, to_y - down, to_x + across, to_y + down};
    }
    return words;
  }

  // The share that two boxes have in common of what they cover together.
  static double Overlap(FoundWord const& a, FoundWord const& b) {
    double const width = std::min(a.right, b.right) - std::max(a.left, b.left);
    double const height = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
    if (width <= 0 || height <= 0) return 0;
    auto const area = [](FoundWord const& w) { return (w.right - w.left) * (w.bottom - w.top); };
    return width * height / (area(a) + area(b) - width * height);
  }

  // All words of the lines are in the document at their place, but for one.
  void ExpectWords(std::string const& name) const { ExpectWords(name, ExpectedWords()); }
  void ExpectWords(std::string const& name, std::vector<FoundWord> const& expected) const {
    ExpectWords(WordsOf(name), expected);
  }
  static void ExpectWords(std::vector<FoundWord> const& found,
                          std::vector<FoundWord> const& expected) {
    ASSERT_GE(expected.size(), 20u);
    size_t right = 0;
    for (FoundWord const& word : expected) {
      right += std::any_of(found.begin(), found.end(), [&](FoundWord const& other) {
        return other.text == word.text && Overlap(word, other) > 0.5;
      });
    }
    std::string text;
    for (FoundWord const& word : found) text += word.text + " ";
    EXPECT_GE(right + 1, expected.size()) << text;
  }

  // The words that the program prints for a file of one page.
  std::vector<FoundWord> PrintedWords(std::string const& name) const {
    constexpr double kScale = 72.0 / kPageDpi;
    std::istringstream lines(OutputOf({SORRELIN_TOOL, "words", Path(name)}));
    std::vector<FoundWord> words;
    for (std::string line; std::getline(lines, line);) {
      char text[64] = "";
      int left = 0, top = 0, right = 0, bottom = 0;
      EXPECT_EQ(std::sscanf(line.c_str() + line.find(", \"text\": "),
                            ", \"text\": \"%63[^\"]\", \"box\": [%d, %d, %d, %d]", text, &left,
                            &top, &right, &bottom),
                5)
          << line;
      words.push_back({text, left * kScale, top * kScale, right * kScale, bottom * kScale});
    }
    return words;
  }

  // The coded data of all pictures, as poppler takes them out.
  std::vector<Bytes> PicturesOf(std::string const& name) const {
    OutputOf({"pdfimages", "-all", Path(name), Path("picture")});
    std::vector<std::filesystem::path> files;
    for (auto const& entry : std::filesystem::directory_iterator(directory_.path())) {
      if (entry.path().filename().string().starts_with("picture-")) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<Bytes> pictures;
    for (auto const& file : files) {
      pictures.push_back(ReadAll(file));
      std::filesystem::remove(file);
    }
    return pictures;
  }

  // A page as MuPDF shows it.
  PixPtr Shown(std::string const& name, int page = 1) const {
    OutputOf({"mutool", "draw", "-q", "-r", "50", "-c", "gray", "-o", Path("shown.pgm"), Path(name),
              std::to_string(page)});
    return PixPtr(pixRead(Path("shown.pgm").c_str()));
  }
  static bool AreEqual(PixPtr const& a, PixPtr const& b) {
    l_int32 same = 0;
    return a != nullptr && b != nullptr && pixEqual(a.get(), b.get(), &same) == 0 && same == 1;
  }

  // Must succeed and say nothing.
  void RunQuietly(std::vector<std::string> arguments) const {
    ProgramResult const result = Run(std::move(arguments));
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out + result.err, "");
  }
};

}  // namespace test

#endif  // TESTS_TOOLS_OCR_FIXTURE_H_

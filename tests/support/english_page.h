// A page of English text for OCR tests, rendered by Ghostscript, with the place of each word as the
// renderer reports it.
#ifndef TESTS_SUPPORT_ENGLISH_PAGE_H_
#define TESTS_SUPPORT_ENGLISH_PAGE_H_

#include <sorrelin/platform/types.h>
#include <tests/support/dib.h>
#include <tests/support/temp_dir.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

inline constexpr int kPageDpi = 300;
inline constexpr LONG kPageDotsPerMetre = 11811;
inline constexpr LONG kPageWidth = 2550;  // pixels
inline constexpr LONG kPageHeight = 1200;
inline constexpr int kPageFontSize = 12;  // points

// A word with the area that its letters may cover, in pixels, the origin at the top left.
struct PlacedWord {
  std::string text;
  LONG left = 0;
  LONG top = 0;
  LONG right = 0;
  LONG bottom = 0;
};

struct EnglishPage {
  std::vector<PlacedWord> words;
  Bytes grey;  // kPageWidth * kPageHeight bytes, the top row first; 0 is black

  BYTE At(LONG x, LONG y) const { return grey[static_cast<size_t>(y * kPageWidth + x)]; }
};

inline char const* EnglishText() {
  return "The old harbour lies behind a long stone wall that keeps the winter\n"
         "storms away from the fishing boats. Every morning before sunrise the\n"
         "crews carry their nets down the wooden steps and check the weather\n"
         "with great care. When the wind turns north they stay at home, mend\n"
         "what is torn, and tell stories about earlier years. Children listen from\n"
         "the doorway, half afraid and half amused. In spring the market opens\n"
         "again, and people from distant villages arrive by train to buy fresh\n"
         "bread, smoked fish and bright flowers. Nobody hurries, because the day\n"
         "is long and everyone knows each other well.\n";
}

// PostScript that shows the text and prints, for each word, its start and end on the baseline in
// points and the word.
inline std::string EnglishPostScript() {
  std::ostringstream page;
  page << "/Helvetica findfont " << kPageFontSize << " scalefont setfont\n"
       << "/p { currentpoint exch 20 string cvs print ( ) print 20 string cvs print ( ) print } "
          "def\n"
       << "/w { p dup show p print (\\n) print flush ( ) show } def\n";
  std::istringstream lines(EnglishText());
  int baseline = 240;  // points from the foot of the page
  for (std::string line; std::getline(lines, line); baseline -= 24) {
    page << "72 " << baseline << " moveto\n";
    std::istringstream words(line);
    for (std::string word; words >> word;) page << "(" << word << ") w\n";
  }
  page << "showpage\n";
  return page.str();
}

inline LONG Pixels(double points) { return static_cast<LONG>(std::lround(points * kPageDpi / 72)); }

inline std::vector<PlacedWord> ReadPlaces(std::filesystem::path const& path) {
  std::ifstream file(path);
  std::vector<PlacedWord> words;
  double left = 0, baseline = 0, right = 0, ignored = 0;
  for (std::string text; file >> left >> baseline >> right >> ignored >> text;) {
    LONG const y = kPageHeight - Pixels(baseline);
    words.push_back({text, Pixels(left), y - Pixels(0.8 * kPageFontSize), Pixels(right),
                     y + Pixels(0.25 * kPageFontSize)});
  }
  return words;
}

// The bytes after a PGM header, which fill the end of the file.
inline Bytes ReadPgm(std::filesystem::path const& path) {
  Bytes const file = ReadAll(path);
  size_t const size = static_cast<size_t>(kPageWidth) * kPageHeight;
  if (file.size() <= size) throw std::runtime_error("no picture from Ghostscript");
  return Bytes(file.end() - static_cast<ptrdiff_t>(size), file.end());
}

// `ghostscript` is the path of the program.
inline EnglishPage RenderEnglishPage(std::string const& ghostscript) {
  TempDir const dir;
  std::ofstream(dir / "page.ps") << EnglishPostScript();
  std::string const command =
      ghostscript + " -q -dNOPAUSE -dBATCH -dSAFER -sDEVICE=pgmraw -dTextAlphaBits=4 -r" +
      std::to_string(kPageDpi) + " -g" + std::to_string(kPageWidth) + "x" +
      std::to_string(kPageHeight) + " -sOutputFile=" + (dir / "page.pgm").string() + " " +
      (dir / "page.ps").string() + " > " + (dir / "places.txt").string();
  if (std::system(command.c_str()) != 0) throw std::runtime_error("Ghostscript failed");
  return {ReadPlaces(dir / "places.txt"), ReadPgm(dir / "page.pgm")};
}

// The page as a bitmap of 1, 8 or 24 bits.
inline Block MakePageDib(EnglishPage const& page, WORD bits) {
  DibSpec spec;
  spec.width = kPageWidth;
  spec.height = kPageHeight;
  spec.bits = bits;
  spec.x_per_metre = kPageDotsPerMetre;
  spec.y_per_metre = kPageDotsPerMetre;
  return MakeDib(spec, [&](LONG x, LONG y) -> DWORD {
    DWORD const grey = page.At(x, y);
    return bits == 1 ? (grey >= 128 ? 1u : 0u) : bits == 8 ? grey : grey * 0x010101u;
  });
}

}  // namespace test

#endif  // TESTS_SUPPORT_ENGLISH_PAGE_H_

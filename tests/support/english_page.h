// A page of English text for OCR tests, which Ghostscript has rendered during the build, with the
// place of each word as the renderer reports it.
#ifndef TESTS_SUPPORT_ENGLISH_PAGE_H_
#define TESTS_SUPPORT_ENGLISH_PAGE_H_

#include <sorrelin/platform/types.h>
#include <tests/support/dib.h>
#include <tests/support/temp_dir.h>

#include <cmath>
#include <fstream>
#include <iterator>
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

  BYTE At(LONG x, LONG y) const {
    return grey[static_cast<size_t>(y) * kPageWidth + static_cast<size_t>(x)];
  }
};

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
  if (file.size() <= size) throw std::runtime_error("no picture of the page");
  return Bytes(file.end() - static_cast<ptrdiff_t>(size), file.end());
}

inline EnglishPage ReadEnglishPage() {
  std::filesystem::path const folder = SORRELIN_ENGLISH_PAGE;
  return {ReadPlaces(folder / "places.txt"), ReadPgm(folder / "page.pgm")};
}

inline std::string ReadEnglishText() {
  std::ifstream file(SORRELIN_ENGLISH_TEXT);
  return {std::istreambuf_iterator<char>(file), {}};
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

// Pages of the kinds that are coded with Group 4, drawn with Leptonica.
#include <leptonica/allheaders.h>
#include <tests/support/bilevel_pages.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {
namespace {

constexpr int32_t kPageWidth = 2480;  // A4 at 300 dpi
constexpr int32_t kPageHeight = 3508;

struct PixDeleter {
  void operator()(PIX* pix) const { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<PIX, PixDeleter>;

struct BmfDeleter {
  void operator()(L_BMF* font) const { bmfDestroy(&font); }
};
using FontPtr = std::unique_ptr<L_BMF, BmfDeleter>;

template <typename Pointer>
Pointer Made(Pointer pointer) {
  if (!pointer) {
    throw std::runtime_error("Leptonica made nothing");
  }
  return pointer;
}

constexpr char const* kParagraph =
    "The keeper of the harbour light wrote a line in the book every evening, whether or not there "
    "was anything to tell. Wind, south-west; sea, moderate; two colliers and a brig went by before "
    "dusk, \"making good way\". On quiet days he added what the garden did: 14 rows of beans, a "
    "frost on May 3, the first swallows (early). In winter the entries grew longer, for then the "
    "nights were long as well, and the lamp had to be trimmed at ten, at one and again at four. "
    "He had learned to judge its flame by the colour of the fog, and the fog by the smell of the "
    "kelp; both, he noted, deceive a man who is in a hurry. ";

// Leptonica keeps a 1-bit picture in 32-bit words whose highest bit is the leftmost pixel; 1 is
// black.
Bilevel FromPix(PIX* pix) {
  Bilevel page(pixGetWidth(pix), pixGetHeight(pix));
  for (int32_t y = 0; y < page.Height(); ++y) {
    l_uint32 const* line = pixGetData(pix) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix);
    for (int32_t x = 0; x < page.Width(); ++x) {
      if ((line[x / 32] >> (31 - x % 32) & 1U) != 0) {
        page.SetBlack(x, y);
      }
    }
  }
  return page;
}

void DrawBlock(PIX* page, int points, std::string const& text, int32_t top, int32_t indent) {
  constexpr int32_t kLeft = 300;
  constexpr int32_t kTextWidth = kPageWidth - 2 * kLeft;
  FontPtr const font = Made(FontPtr(bmfCreate(nullptr, points)));
  l_int32 overflow = 0;
  pixSetTextblock(page, font.get(), text.c_str(), 1, kLeft, top, kTextWidth, indent, &overflow);
}

PixPtr DrawText() {
  PixPtr page = Made(PixPtr(pixCreate(kPageWidth, kPageHeight, 1)));
  DrawBlock(page.get(), 18, "3. From the Keeper's Book", 330, 0);
  constexpr int kParagraphs = 5;
  for (int i = 0; i < kParagraphs; ++i) {
    DrawBlock(page.get(), 10, kParagraph, 520 + i * 530, 2);
  }
  DrawBlock(page.get(), 8, "- 27 -", 3300, 24);
  return page;
}

PixPtr ToGray(PIX* pix) { return Made(PixPtr(pixConvert1To8(nullptr, pix, 255, 0))); }

// Brightness 0..1 at a point of the picture: a shaded ball before a wavy background.
double Brightness(int32_t x, int32_t y) {
  double const u = static_cast<double>(x) / kPageWidth;
  double const v = static_cast<double>(y) / kPageHeight;
  double const dx = (u - 0.45) * 1.6;
  double const dy = (v - 0.4) * 2.2;
  double const distance = std::sqrt(dx * dx + dy * dy);
  if (distance < 0.45) {
    return 0.15 + 0.8 * std::max(0.0, 1.0 - distance * 2 - dx * 0.6);
  }
  return 0.5 + 0.25 * std::sin(u * 9 + v * 4) + 0.2 * std::cos(v * 7 - u * 2);
}

// Threshold of the screen at a point, 0..1: two cosines turned by 45 degrees grow round dots.
double Screen(int32_t x, int32_t y) {
  constexpr double kCell = 5.65;  // pixels between dots
  constexpr double kPi = 3.14159265358979323846;
  double const along = (x + y) / std::sqrt(2.0) * 2 * kPi / kCell;
  double const across = (x - y) / std::sqrt(2.0) * 2 * kPi / kCell;
  return 0.5 + 0.25 * (std::cos(along) + std::cos(across));
}

}  // namespace

Bilevel TextPage(int32_t dpi) {
  PixPtr const page = DrawText();
  if (dpi == 300) {
    return FromPix(page.get());
  }
  PixPtr const gray = ToGray(page.get());
  return FromPix(Made(PixPtr(pixScaleGray2xLIThresh(gray.get(), 128))).get());
}

Bilevel ScannedPage() {
  constexpr float kHalfDegree = 0.0087266F;
  PixPtr const straight = DrawText();
  PixPtr const gray = ToGray(straight.get());
  PixPtr const askew = Made(PixPtr(pixRotateAMGray(gray.get(), kHalfDegree, 255)));
  Bilevel page(kPageWidth, kPageHeight);
  std::mt19937 random(20);
  for (int32_t y = 0; y < kPageHeight; ++y) {
    for (int32_t x = 0; x < kPageWidth; ++x) {
      l_uint32 light = 0;
      pixGetPixel(askew.get(), x, y, &light);
      auto const grain = static_cast<int32_t>(random() % 161) - 80;
      bool const speck = random() % 1500 == 0;
      if ((static_cast<int32_t>(light) + grain < 128) != speck) {
        page.SetBlack(x, y);
      }
    }
  }
  return page;
}

Bilevel HalftonePage() {
  Bilevel page(kPageWidth, kPageHeight);
  for (int32_t y = 0; y < kPageHeight; ++y) {
    for (int32_t x = 0; x < kPageWidth; ++x) {
      if (Brightness(x, y) < Screen(x, y)) {
        page.SetBlack(x, y);
      }
    }
  }
  return page;
}

Bilevel DiffusedPage() {
  Bilevel page(kPageWidth, kPageHeight);
  std::array<std::vector<double>, 2> error;
  error.fill(std::vector<double>(kPageWidth + 2));
  for (int32_t y = 0; y < kPageHeight; ++y) {
    std::vector<double>& here = error[static_cast<size_t>(y % 2)];
    std::vector<double>& below = error[static_cast<size_t>((y + 1) % 2)];
    std::fill(below.begin(), below.end(), 0.0);
    for (int32_t x = 0; x < kPageWidth; ++x) {
      auto const at = static_cast<size_t>(x) + 1;
      double const wanted = Brightness(x, y) + here[at];
      double const shown = wanted < 0.5 ? 0.0 : 1.0;
      if (shown == 0.0) {
        page.SetBlack(x, y);
      }
      double const rest = wanted - shown;  // Floyd and Steinberg's weights
      here[at + 1] += rest * 7 / 16;
      below[at - 1] += rest * 3 / 16;
      below[at] += rest * 5 / 16;
      below[at + 1] += rest / 16;
    }
  }
  return page;
}

}  // namespace test

// Leptonica's search for the skew of text lines, and connected components of few pixels.
#include "tools/make/pages/scan_cleaning.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "tools/formats/picture/changes.h"

namespace sorrelin::tool {
namespace {

constexpr int kTones = 256;
constexpr int kInkOfPaper = 75;    // percent of the paper's tone; darker is ink
constexpr int kUsualDpi = 300;     // of pictures without a resolution
constexpr int kSpecksAnInch = 75;  // side by side, the largest that --clean removes
constexpr int kTraces = 50;        // dots an inch at which a page is looked at for ink
constexpr int kConnectivity = 8;
constexpr int kUsualSearch = 0;  // Leptonica chooses how finely it looks for the angle

int DpiOf(Picture const& picture) { return picture.dpi.x > 0 ? picture.dpi.x : kUsualDpi; }

// The most frequent tone of a picture of 8 bits in grey.
int PaperTone(Pix* grey) {
  std::array<size_t, kTones> counts{};
  for (l_int32 y = 0; y < pixGetHeight(grey); ++y) {
    l_uint32 const* const line =
        pixGetData(grey) + static_cast<size_t>(y) * static_cast<size_t>(pixGetWpl(grey));
    for (l_int32 x = 0; x < pixGetWidth(grey); ++x) ++counts[GET_DATA_BYTE(line, x)];
  }
  return static_cast<int>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

// One bit a pixel, set where there is ink. Null when memory is short.
PixPtr Ink(Pix* pix) {
  if (pixGetDepth(pix) == 1) return PixPtr(pixClone(pix));
  PixPtr const grey(pixConvertTo8(pix, 0));
  if (grey == nullptr) return nullptr;
  return PixPtr(pixThresholdToBinary(grey.get(), PaperTone(grey.get()) * kInkOfPaper / 100));
}

// Null when memory is short; the same picture if no lines are seen to be tilted.
PixPtr Straightened(Pix* pix) {
  PixPtr const plain(pixGetDepth(pix) == 1 ? pixClone(pix) : WithoutPalette(pix).release());
  return plain == nullptr ? nullptr : PixPtr(pixDeskew(plain.get(), kUsualSearch));
}

// The parts of the ink that are at most `side` pixels wide and high. Null when memory is short.
PixPtr Specks(Pix* ink, int side) {
  return PixPtr(
      pixSelectBySize(ink, side, side, kConnectivity, L_SELECT_IF_BOTH, L_SELECT_IF_LTE, nullptr));
}

// Paints the picture with the colour of its paper where the mask is set.
void PaintPaper(Pix* pix, Pix* mask) {
  l_uint32 paper = 0;
  if (pixGetDepth(pix) == 8) {
    paper = static_cast<l_uint32>(PaperTone(pix));
  } else {
    std::array<l_int32, 3> tones{};
    for (size_t i = 0; i < tones.size(); ++i) {
      PixPtr const plane(pixGetRGBComponent(pix, static_cast<l_int32>(i)));
      if (plane != nullptr) tones[i] = PaperTone(plane.get());
    }
    composeRGBPixel(tones[0], tones[1], tones[2], &paper);
  }
  pixSetMasked(pix, mask, paper);
}

// The picture without specks, or a null picture when memory is short. `found` says whether there
// were any.
PixPtr Cleaned(Pix* pix, int side, bool& found) {
  PixPtr const ink = Ink(pix);
  PixPtr const specks = ink != nullptr ? Specks(ink.get(), side) : nullptr;
  l_int32 none = 1;
  if (specks == nullptr || pixZero(specks.get(), &none) != 0) return nullptr;
  found = none == 0;
  if (!found) return PixPtr(pixClone(pix));
  if (pixGetDepth(pix) == 1) return PixPtr(pixSubtract(nullptr, pix, specks.get()));
  // The soft edge of a speck goes with it.
  PixPtr const mask(pixDilateBrick(nullptr, specks.get(), 3, 3));
  PixPtr plain = WithoutPalette(pix);
  if (mask == nullptr || plain == nullptr) return nullptr;
  PixPtr cleaned(pixCopy(nullptr, plain.get()));
  if (cleaned != nullptr) PaintPaper(cleaned.get(), mask.get());
  return cleaned;
}

bool Straighten(Picture& picture) {
  PixPtr straight = Straightened(picture.pix.get());
  if (straight == nullptr) return false;
  l_int32 same = 0;
  bool const is_changed = pixGetWidth(straight.get()) != pixGetWidth(picture.pix.get()) ||
                          pixEqual(straight.get(), picture.pix.get(), &same) != 0 || same == 0;
  if (!is_changed) return true;
  picture.changes.Add(Change::kStraightened);
  picture.pix = std::move(straight);
  return true;
}

bool RemoveSpecks(Picture& picture) {
  bool found = false;
  PixPtr clean = Cleaned(picture.pix.get(), std::max(DpiOf(picture) / kSpecksAnInch, 1), found);
  if (clean == nullptr) return false;
  if (!found) return true;
  picture.changes.Add(Change::kCleaned);
  picture.pix = std::move(clean);
  return true;
}

}  // namespace

double InkPercent(Picture const& picture) {
  PixPtr const grey(pixConvertTo8(picture.pix.get(), 0));
  if (grey == nullptr) return 100;
  float const scale =
      std::min(1.0F, static_cast<float>(kTraces) / static_cast<float>(DpiOf(picture)));
  PixPtr const small(pixScaleAreaMap(grey.get(), scale, scale));
  PixPtr const ink = Ink(small != nullptr ? small.get() : grey.get());
  l_float32 share = 1;
  if (ink == nullptr || pixForegroundFraction(ink.get(), &share) != 0) return 100;
  return 100.0 * static_cast<double>(share);
}

bool CleanScan(ScanStyle const& style, Picture& picture) {
  return (!style.deskew || Straighten(picture)) && (!style.clean || RemoveSpecks(picture));
}

}  // namespace sorrelin::tool

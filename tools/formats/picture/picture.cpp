// Packs Leptonica pictures as bitmaps of 1, 8 or 24 bits.
#include "tools/formats/picture/picture.h"

#include <sorrelin/platform/row_stride.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "tools/formats/picture/pix_rows.h"

namespace sorrelin::tool {
namespace {

constexpr int kPaletteEntries = 256;
constexpr double kMetresPerInch = 0.0254;

using Palette = std::array<RGBQUAD, kPaletteEntries>;

// One channel, `alpha` of 255 opaque, over white.
BYTE OverWhite(int value, int alpha) {
  return static_cast<BYTE>((value * alpha + 255 * (255 - alpha) + 127) / 255);
}

BYTE OverWhitePremultiplied(int value, int alpha) {
  int const sum = value + 255 - alpha;
  return static_cast<BYTE>(sum > 255 ? 255 : sum);
}

// Which bit value a two-entry colour map shows as black, or -1 if it is not black and white.
int BlackIndex(PixColormap* map) {
  if (pixcmapGetCount(map) != 2) return -1;
  std::array<int, 2> tone{};
  for (int i = 0; i < 2; ++i) {
    int red = 0, green = 0, blue = 0, alpha = 0;
    pixcmapGetRGBA(map, i, &red, &green, &blue, &alpha);
    bool const grey = red == green && green == blue && (red == 0 || red == 255);
    if (!grey || alpha != 255) return -1;
    tone[static_cast<size_t>(i)] = red;
  }
  if (tone[0] == tone[1]) return -1;
  return tone[0] == 0 ? 0 : 1;
}

void FillGreys(Palette& palette, int depth) {
  int const top = (1 << depth) - 1;
  for (int i = 0; i <= top; ++i) {
    BYTE const tone = static_cast<BYTE>(255 * i / top);
    palette[static_cast<size_t>(i)] = {tone, tone, tone, 0};
  }
}

void FillColours(Palette& palette, PixColormap* map) {
  int const count = std::min(pixcmapGetCount(map), kPaletteEntries);
  for (int i = 0; i < count; ++i) {
    int red = 0, green = 0, blue = 0, alpha = 255;
    pixcmapGetRGBA(map, i, &red, &green, &blue, &alpha);
    palette[static_cast<size_t>(i)] = {OverWhite(blue, alpha), OverWhite(green, alpha),
                                       OverWhite(red, alpha), 0};
  }
}

Palette PaletteOf(Pix* pix) {
  Palette palette{};
  if (PixColormap* const map = pixGetColormap(pix); map != nullptr) {
    FillColours(palette, map);
  } else {
    FillGreys(palette, std::min(pixGetDepth(pix), 8));
  }
  return palette;
}

// Rows are taken from words whose first pixel is in the highest bits, which GET_DATA_BYTE turns
// into bytes on any machine.
void PackBilevelRow(l_uint32 const* line, int width, int black_bit, BYTE* row) {
  BYTE const flip = black_bit == 1 ? 0xFF : 0x00;
  int const bytes = (width + 7) / 8;
  PackWords(line, flip, {row, static_cast<size_t>(bytes)});
  int const spare = bytes * 8 - width;
  row[bytes - 1] = static_cast<BYTE>(row[bytes - 1] & (0xFF << spare));
}

void PackIndexRow(l_uint32 const* line, int width, int depth, BYTE* row) {
  if (depth == 8) return PackWords(line, 0, {row, static_cast<size_t>(width)});
  for (int x = 0; x < width; ++x) {
    switch (depth) {
      case 1:
        row[x] = static_cast<BYTE>(GET_DATA_BIT(line, x));
        break;
      case 2:
        row[x] = static_cast<BYTE>(GET_DATA_DIBIT(line, x));
        break;
      case 4:
        row[x] = static_cast<BYTE>(GET_DATA_QBIT(line, x));
        break;
      default:
        row[x] = static_cast<BYTE>(GET_DATA_TWO_BYTES(line, x) >> 8);
        break;
    }
  }
}

void PackColourRow(l_uint32 const* line, int width, BYTE* row) {
  for (int x = 0; x < width; ++x, row += 3) {
    l_uint32 const pixel = line[x];
    row[0] = static_cast<BYTE>(pixel >> L_BLUE_SHIFT);
    row[1] = static_cast<BYTE>(pixel >> L_GREEN_SHIFT);
    row[2] = static_cast<BYTE>(pixel >> L_RED_SHIFT);
  }
}

void PackRow(Pix* pix, int y, int depth, BYTE* row) {
  int const width = pixGetWidth(pix);
  l_uint32 const* const line =
      pixGetData(pix) + static_cast<ptrdiff_t>(y) * static_cast<ptrdiff_t>(pixGetWpl(pix));
  if (depth == 1) {
    PackBilevelRow(line, width, BlackBit(pix), row);
  } else if (depth == 8) {
    PackIndexRow(line, width, pixGetDepth(pix), row);
  } else {
    PackColourRow(line, width, row);
  }
}

LONG PerMetre(int per_inch) {
  double const value = std::round(per_inch / kMetresPerInch);
  return static_cast<LONG>(std::min<double>(value, std::numeric_limits<LONG>::max()));
}

BITMAPINFOHEADER HeaderOf(Pix* pix, int depth, Resolution dpi) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = pixGetWidth(pix);
  header.biHeight = pixGetHeight(pix);
  header.biPlanes = 1;
  header.biBitCount = static_cast<WORD>(depth);
  header.biXPelsPerMeter = PerMetre(dpi.x);
  header.biYPelsPerMeter = PerMetre(dpi.y);
  return header;
}

// Bytes of the colour table. The library's encoders look for the rows after a full one.
size_t TableBytes(int depth) {
  if (depth == 1) return 2 * sizeof(RGBQUAD);
  return depth == 8 ? sizeof(Palette) : 0;
}

void WriteTable(Pix* pix, int depth, BYTE* table) {
  if (depth == 1) {
    constexpr std::array<RGBQUAD, 2> kBlackWhite = {{{0, 0, 0, 0}, {255, 255, 255, 0}}};
    std::memcpy(table, kBlackWhite.data(), sizeof kBlackWhite);
  } else if (depth == 8) {
    Palette const palette = PaletteOf(pix);
    std::memcpy(table, palette.data(), sizeof palette);
  }
}

}  // namespace

int BlackBit(Pix* pix) {
  PixColormap* const map = pixGetColormap(pix);
  return map == nullptr ? 1 : BlackIndex(map);
}

bool BlendOnWhite(Pix* pix, bool premultiplied) {
  if (pixGetDepth(pix) != 32 || pixGetSpp(pix) != 4) return false;
  auto const over = premultiplied ? OverWhitePremultiplied : OverWhite;
  size_t const words = static_cast<size_t>(pixGetWpl(pix)) * static_cast<size_t>(pixGetHeight(pix));
  l_uint32* const data = pixGetData(pix);
  bool opaque = true;
  for (size_t i = 0; i < words; ++i) {
    l_int32 red = 0, green = 0, blue = 0;
    extractRGBValues(data[i], &red, &green, &blue);
    int const alpha = static_cast<int>(data[i] >> L_ALPHA_SHIFT & 0xFF);
    opaque &= alpha == 0xFF;
    composeRGBPixel(over(red, alpha), over(green, alpha), over(blue, alpha), &data[i]);
  }
  pixSetSpp(pix, 3);
  return !opaque;
}

PixPtr Reindexed(PixPtr pix) {
  if (pixGetDepth(pix.get()) != 32) return pix;
  PixPtr indexed(pixConvertRGBToCmapLossless(pix.get()));
  if (indexed != nullptr) pixCopyResolution(indexed.get(), pix.get());
  return indexed;
}

PixPtr Upright(PixPtr pix, int orientation) {
  PixPtr turned;
  if (orientation == 3 || orientation == 4) turned.reset(pixRotate180(nullptr, pix.get()));
  if (orientation == 5 || orientation == 6) turned.reset(pixRotate90(pix.get(), 1));
  if (orientation == 7 || orientation == 8) turned.reset(pixRotate90(pix.get(), -1));
  if (orientation >= 3 && turned == nullptr) return nullptr;
  if (orientation >= 3) pix = std::move(turned);
  bool const mirrored =
      orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
  if (mirrored) pixFlipLR(pix.get(), pix.get());
  return pix;
}

int PackedDepth(Pix* pix) {
  int const depth = pixGetDepth(pix);
  if (depth == 1) return BlackBit(pix) >= 0 ? 1 : 8;
  return depth <= 16 ? 8 : 24;
}

PixPtr WithoutPalette(Pix* pix) {
  if (pixGetColormap(pix) == nullptr) {
    return PixPtr(pixGetDepth(pix) == 32 ? pixClone(pix) : pixConvertTo8(pix, 0));
  }
  PixPtr plain(pixRemoveColormap(pix, REMOVE_CMAP_BASED_ON_SRC));
  if (plain == nullptr) return nullptr;
  BlendOnWhite(plain.get(), false);
  return pixGetDepth(plain.get()) == 1 ? PixPtr(pixConvertTo8(plain.get(), 0)) : std::move(plain);
}

OwnedBlock PackedDib(Pix* pix, Resolution dpi) {
  int const depth = PackedDepth(pix);
  uint64_t const width = static_cast<uint64_t>(pixGetWidth(pix));
  uint64_t const height = static_cast<uint64_t>(pixGetHeight(pix));
  uint64_t const stride = RowStride(width, static_cast<uint64_t>(depth));
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + TableBytes(depth);
  OwnedBlock block = NewOwnedBlock(GHND, rows_at + stride * height);
  if (!block.IsValid()) return block;
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(block.get()));
  BITMAPINFOHEADER const header = HeaderOf(pix, depth, dpi);
  std::memcpy(bytes, &header, sizeof header);
  WriteTable(pix, depth, bytes + sizeof header);
  for (uint64_t y = 0; y < height; ++y) {
    PackRow(pix, static_cast<int>(y), depth, bytes + rows_at + stride * (height - 1 - y));
  }
  GlobalUnlock(block.get());
  return block;
}

}  // namespace sorrelin::tool

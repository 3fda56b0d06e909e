// From Leptonica's words to packed samples.
#include "tools/formats/picture/samples.h"

#include "tools/formats/picture/picture.h"
#include "tools/formats/picture/pix_rows.h"

namespace sorrelin::tool {
namespace {

constexpr BYTE kOpaque = 255;

BYTE OverWhite(int value, int alpha) {
  return static_cast<BYTE>((value * alpha + kOpaque * (kOpaque - alpha) + kOpaque / 2) / kOpaque);
}

// All indices of the depth have an entry; those that the map lacks are black.
std::vector<BYTE> PaletteOf(PixColormap* map, int bits) {
  std::vector<BYTE> palette(size_t{3} << bits);
  for (int i = 0; i < pixcmapGetCount(map) && i < 1 << bits; ++i) {
    int red = 0, green = 0, blue = 0, alpha = kOpaque;
    pixcmapGetRGBA(map, i, &red, &green, &blue, &alpha);
    BYTE* const entry = palette.data() + 3 * static_cast<size_t>(i);
    entry[0] = OverWhite(red, alpha);
    entry[1] = OverWhite(green, alpha);
    entry[2] = OverWhite(blue, alpha);
  }
  return palette;
}

void CopyColours(l_uint32 const* line, int width, BYTE* row) {
  for (int x = 0; x < width; ++x, row += 3) {
    l_uint32 const pixel = line[x];
    row[0] = static_cast<BYTE>(pixel >> L_RED_SHIFT);
    row[1] = static_cast<BYTE>(pixel >> L_GREEN_SHIFT);
    row[2] = static_cast<BYTE>(pixel >> L_BLUE_SHIFT);
  }
}

// The bits after the last pixel are 0.
void CopyPacked(l_uint32 const* line, size_t row_bytes, size_t row_bits, BYTE flip, BYTE* row) {
  PackWords(line, flip, {row, row_bytes});
  size_t const spare = row_bytes * 8 - row_bits;
  row[row_bytes - 1] = static_cast<BYTE>(row[row_bytes - 1] & (0xFF << spare));
}

}  // namespace

Samples SamplesOf(Pix* pix) {
  int const depth = pixGetDepth(pix);
  PixColormap* const map = pixGetColormap(pix);
  bool const bilevel = depth == 1 && PackedDepth(pix) == 1;
  Samples samples;
  samples.width = pixGetWidth(pix);
  samples.height = pixGetHeight(pix);
  samples.bits = depth == 32 ? 8 : depth;
  bool const indexed = map != nullptr && !bilevel;
  if (depth == 32 || indexed) samples.colours = ImageColours::kRgb;
  if (indexed) samples.palette = PaletteOf(map, depth);
  size_t const row_bytes = samples.RowBytes(), rows = static_cast<size_t>(samples.height);
  samples.bytes.resize(samples.Bytes());
  size_t const row_bits = static_cast<size_t>(samples.width) * static_cast<size_t>(depth);
  BYTE const flip = bilevel && BlackBit(pix) == 1 ? 0xFF : 0x00;
  for (size_t y = 0; y < rows; ++y) {
    l_uint32 const* const line = pixGetData(pix) + y * static_cast<size_t>(pixGetWpl(pix));
    BYTE* const row = samples.bytes.data() + y * row_bytes;
    if (depth == 32) {
      CopyColours(line, samples.width, row);
    } else {
      CopyPacked(line, row_bytes, row_bits, flip, row);
    }
  }
  return samples;
}

}  // namespace sorrelin::tool

// Standard headers and colours.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/color_table.h>
#include <sorrelin/image/toolbox/dib_layout.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {
namespace {

struct Color {
  BYTE red;
  BYTE green;
  BYTE blue;
};

constexpr Color kBilevel[] = {{0, 0, 0}, {255, 255, 255}};

constexpr Color kSixteen[] = {{0, 0, 0},       {128, 0, 0},   {0, 128, 0},   {128, 128, 0},
                              {0, 0, 128},     {128, 0, 128}, {0, 128, 128}, {192, 192, 192},
                              {128, 128, 128}, {255, 0, 0},   {0, 255, 0},   {255, 255, 0},
                              {0, 0, 255},     {255, 0, 255}, {0, 255, 255}, {255, 255, 255}};

// The colour whose red, green and blue are three, three and two bits of the index.
Color BitFieldColor(DWORD index) {
  return {static_cast<BYTE>((index >> 5) * 36), static_cast<BYTE>(((index >> 2) & 7) * 36),
          static_cast<BYTE>((index & 3) * 85)};
}

Color DefaultColor(int bits, DWORD index) {
  if (bits == 1) return kBilevel[index];
  return bits == 4 ? kSixteen[index] : BitFieldColor(index);
}

int RoundedDepth(int bits) {
  if (bits <= 1) return 1;
  if (bits <= 4) return 4;
  return bits <= 8 ? 8 : 24;
}

}  // namespace

bool InitBitmapInfoHeader(BITMAPINFOHEADER& header, LONG width, LONG height, int bits) {
  if (width < 0 || height < 0) return false;
  int const depth = RoundedDepth(bits);
  uint64_t const picture_bytes = PackedStride(width, depth) * static_cast<uint64_t>(height);
  if (picture_bytes > kMaxBlockBytes) return false;
  header = BITMAPINFOHEADER{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<WORD>(depth);
  header.biSizeImage = static_cast<DWORD>(picture_bytes);
  if (depth < 24) header.biClrUsed = header.biClrImportant = DWORD{1} << depth;
  return true;
}

void SetDefaultColorTable(std::span<BYTE> block) {
  DibLayout const layout(block);
  DWORD const count = std::min(layout.colors, DefaultColors(layout.bits));
  size_t const entry_bytes = static_cast<size_t>(layout.TableEntryBytes());
  for (DWORD i = 0; i < count; ++i) {
    Color const color = DefaultColor(layout.bits, i);
    BYTE const entry[] = {color.blue, color.green, color.red, 0};
    uint64_t const at = layout.header_bytes + uint64_t{i} * entry_bytes;
    if (at >= block.size()) return;
    std::memcpy(block.data() + at, entry,
                std::min<size_t>(entry_bytes, block.size() - static_cast<size_t>(at)));
  }
}

}  // namespace sorrelin

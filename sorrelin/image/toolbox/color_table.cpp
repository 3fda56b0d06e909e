// Standard headers and colours.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/color_table.h>
#include <sorrelin/image/toolbox/dib_layout.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {
namespace {

// In the order of the table's bytes.
constexpr RGBQUAD Color(int red, int green, int blue) {
  return {static_cast<BYTE>(blue), static_cast<BYTE>(green), static_cast<BYTE>(red), 0};
}

constexpr RGBQUAD kBilevel[] = {Color(0, 0, 0), Color(255, 255, 255)};

constexpr RGBQUAD kSixteen[] = {
    Color(0, 0, 0),       Color(128, 0, 0),   Color(0, 128, 0),   Color(128, 128, 0),
    Color(0, 0, 128),     Color(128, 0, 128), Color(0, 128, 128), Color(192, 192, 192),
    Color(128, 128, 128), Color(255, 0, 0),   Color(0, 255, 0),   Color(255, 255, 0),
    Color(0, 0, 255),     Color(255, 0, 255), Color(0, 255, 255), Color(255, 255, 255)};

// The colour whose red, green and blue are three, three and two bits of the index.
RGBQUAD BitFieldColor(DWORD index) {
  int const bits = static_cast<int>(index);
  return Color((bits >> 5) * 36, ((bits >> 2) & 7) * 36, (bits & 3) * 85);
}

RGBQUAD DefaultColor(int bits, DWORD index) {
  if (bits == 1) return kBilevel[index];
  return bits == 4 ? kSixteen[index] : BitFieldColor(index);
}

uint64_t EntryOffset(DibLayout const& layout, DWORD index) {
  return layout.header_bytes + index * layout.TableEntryBytes();
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

RGBQUAD TableColor(std::span<BYTE const> block, DWORD index) {
  DibLayout const layout(block);
  BYTE entry[sizeof(RGBQUAD)] = {};
  ReadOrZero(block, EntryOffset(layout, index),
             std::span(entry).first(static_cast<size_t>(layout.TableEntryBytes())));
  return {entry[0], entry[1], entry[2], entry[3]};
}

void SetTableColor(std::span<BYTE> block, DWORD index, RGBQUAD color) {
  DibLayout const layout(block);
  uint64_t const at = EntryOffset(layout, index);
  if (at >= block.size()) return;
  uint64_t const room = block.size() - at;
  std::memcpy(block.data() + at, &color,
              static_cast<size_t>(std::min(layout.TableEntryBytes(), room)));
}

void SetDefaultColorTable(std::span<BYTE> block) {
  DibLayout const layout(block);
  DWORD const count = std::min(layout.colors, DefaultColors(layout.bits));
  for (DWORD i = 0; i < count; ++i) SetTableColor(block, i, DefaultColor(layout.bits, i));
}

RGBQUAD SpreadColor(DWORD index) {
  if (index == kSpreadColors - 1) return Color(255, 255, 255);
  int const bits = static_cast<int>(index);
  return Color((bits & 7) * 32, ((bits >> 3) & 7) * 32, ((bits >> 6) & 3) * 64);
}

}  // namespace sorrelin

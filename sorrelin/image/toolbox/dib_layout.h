// The layout of a packed bitmap, for bitmaps of either header kind and any depth: a
// BITMAPINFOHEADER (40 bytes or more) with a table of RGBQUAD, or a BITMAPCOREHEADER (12 bytes:
// size, then 16 bits each of width, height, planes and depth) with a table of triples; rows in
// block order, each padded to 4 bytes. Offsets and sizes are in bytes; what a block lacks reads as
// 0.
#ifndef SORRELIN_IMAGE_TOOLBOX_DIB_LAYOUT_H_
#define SORRELIN_IMAGE_TOOLBOX_DIB_LAYOUT_H_

#include <sorrelin/platform/row_stride.h>
#include <sorrelin/platform/types.h>

#include <cstdint>
#include <span>

namespace sorrelin {

inline constexpr DWORD kCoreHeaderBytes = 12;
inline constexpr uint64_t kTripleBytes = 3;
inline constexpr uint64_t kMaxBlockBytes = 0xFFFFFFFF;

// Bits that a pixel takes in its row: 16 for 15, otherwise the depth.
constexpr uint64_t StoredBits(int bits) { return bits == 15 ? 16 : static_cast<uint64_t>(bits); }

// Bytes of a row with its padding; 0 for a width below 1 and for depths outside 1..32.
constexpr uint64_t PackedStride(int64_t width, int bits) {
  if (width < 1 || bits < 1 || bits > 32) return 0;
  return RowStride(static_cast<uint64_t>(width), StoredBits(bits));
}

struct DibLayout {
  explicit DibLayout(std::span<BYTE const> block);

  bool IsCore() const { return header_bytes == kCoreHeaderBytes; }
  uint64_t Stride() const { return PackedStride(width, bits); }
  uint64_t Rows() const { return static_cast<uint64_t>(height < 0 ? -height : height); }
  uint64_t PictureBytes() const { return Stride() * Rows(); }
  uint64_t TableEntryBytes() const { return IsCore() ? kTripleBytes : sizeof(RGBQUAD); }
  uint64_t TableBytes() const { return colors * TableEntryBytes(); }
  uint64_t RowsOffset() const { return header_bytes + TableBytes(); }

  DWORD header_bytes = 0;
  int64_t width = 0;
  int64_t height = 0;  // negative: the top row comes first
  int bits = 0;
  DWORD colors = 0;  // table entries
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_TOOLBOX_DIB_LAYOUT_H_

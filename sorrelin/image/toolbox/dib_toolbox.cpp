// Blank bitmaps, copies, and the places of a bitmap's parts.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/dib_layout.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <sorrelin/image/toolbox/new_block.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/units.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {
namespace {

constexpr int kMinDpi = 50;
constexpr int kMaxDpi = 9999;
constexpr RGBQUAD kWhite{255, 255, 255, 0};
bool IsDpi(int dpi) { return dpi >= kMinDpi && dpi <= kMaxDpi; }

LONG PerMetre(int dpi) { return static_cast<LONG>(dpi * kInchesPerMetreOfNewBitmaps + 0.5); }

BITMAPINFOHEADER BlankHeader(POINT size, int bits, uint64_t picture_bytes) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = size.x;
  header.biHeight = size.y;
  header.biPlanes = 1;
  header.biBitCount = static_cast<WORD>(bits);
  header.biSizeImage = static_cast<DWORD>(picture_bytes);
  return header;
}

// The value of every byte of the rows.
BYTE BlankValue(int bits, bool white) {
  // Kept: the dark index of 8 bits is 2, one of 255 that are black; callers compare pixels with it.
  if (bits == 8) return white ? 0 : 2;
  return white ? 255 : 0;
}

// The table starts as black.
void FillBlankTable(BYTE* table, int bits) {
  if (bits == 1) std::memcpy(table + sizeof(RGBQUAD), &kWhite, sizeof kWhite);
  if (bits == 8) std::memcpy(table, &kWhite, sizeof kWhite);
}

}  // namespace

HDIB CreateBlankDIB(POINT size, int x_dpi, int y_dpi, int bits, bool white) {
  if (size.x <= 0 || !IsDpi(x_dpi) || !IsDpi(y_dpi)) return nullptr;
  if (bits != 1 && bits != 8 && bits != 24) return nullptr;
  // A negative height is one beyond all sizes here.
  uint64_t const picture_bytes = DibStride(size.x, bits) * static_cast<DWORD>(size.y);
  if (picture_bytes > kMaxBlockBytes) return nullptr;
  BITMAPINFOHEADER header = BlankHeader(size, bits, picture_bytes);
  header.biXPelsPerMeter = PerMetre(x_dpi);
  header.biYPelsPerMeter = PerMetre(y_dpi);
  uint64_t const rows_at = FirstRowOffset(header);
  OwnedBlock block(NewBlock(rows_at + picture_bytes + kSpareBytes));
  {
    LockedBlock const locked(block.get());
    if (!locked) return nullptr;
    BYTE* const bytes = locked.bytes().data();
    std::memcpy(bytes, &header, sizeof header);
    FillBlankTable(bytes + sizeof header, bits);
    BYTE const value = BlankValue(bits, white);
    if (value != 0) std::memset(bytes + rows_at, value, static_cast<size_t>(picture_bytes));
  }
  return block.Release();
}

HGLOBAL DuplicateBlock(HGLOBAL block) {
  LockedBlock const source(block);
  if (!source) return nullptr;
  return NewBlock(source.bytes().size(), source.bytes());
}

DWORD GetColorCount(std::span<BYTE const> block) { return DibLayout(block).colors; }

uint64_t GetPaletteSize(std::span<BYTE const> block) { return DibLayout(block).TableBytes(); }

std::span<BYTE> GetDIBBits(std::span<BYTE> block) {
  uint64_t const offset = DibLayout(block).RowsOffset();
  return block.subspan(static_cast<size_t>(std::min<uint64_t>(offset, block.size())));
}

}  // namespace sorrelin

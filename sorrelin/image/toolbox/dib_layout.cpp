// Reading of both kinds of bitmap header.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/dib_layout.h>

#include <cstddef>
#include <cstring>

namespace sorrelin {
namespace {

// A field of the header, which a short block may lack.
template <typename Value>
Value Field(std::span<BYTE const> block, size_t offset) {
  BYTE bytes[sizeof(Value)];
  ReadOrZero(block, offset, bytes);
  Value value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

}  // namespace

DibLayout::DibLayout(std::span<BYTE const> block) : header_bytes(Field<DWORD>(block, 0)) {
  if (IsCore()) {
    width = Field<WORD>(block, 4);
    height = Field<WORD>(block, 6);
    bits = Field<WORD>(block, 10);
  } else {
    width = Field<LONG>(block, offsetof(BITMAPINFOHEADER, biWidth));
    height = Field<LONG>(block, offsetof(BITMAPINFOHEADER, biHeight));
    bits = Field<WORD>(block, offsetof(BITMAPINFOHEADER, biBitCount));
  }
  // Kept: only a header of exactly 40 bytes has its number of colours; for longer ones the depth
  // decides, and the rows of their bitmaps are found by that.
  if (header_bytes == sizeof(BITMAPINFOHEADER)) {
    colors = Field<DWORD>(block, offsetof(BITMAPINFOHEADER, biClrUsed));
  }
  if (colors == 0) colors = DefaultColors(bits);
}

}  // namespace sorrelin

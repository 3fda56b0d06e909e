// Reading of a packed bitmap within the bounds of its block.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/row_stride.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {

uint64_t FirstRowOffset(BITMAPINFOHEADER const& header) {
  if (header.biClrUsed != 0) {
    return kDibHeaderBytes + uint64_t{header.biClrUsed} * sizeof(RGBQUAD);
  }
  return kDibHeaderBytes + uint64_t{DefaultColors(header.biBitCount)} * sizeof(RGBQUAD);
}

uint64_t DibStride(int64_t width, int bits) {
  if (width < 0 || (bits != 1 && bits != 8 && bits != 24)) return 0;
  return RowStride(static_cast<uint64_t>(width), static_cast<uint64_t>(bits));
}

uint64_t DibPayload(int64_t width, int bits) {
  if (width < 0 || (bits != 1 && bits != 8 && bits != 24)) return 0;
  return (static_cast<uint64_t>(width) * static_cast<uint64_t>(bits) + 7) / 8;
}

DWORD DefaultColors(int bits) {
  switch (bits) {
    case 1:
      return 2;
    case 4:
      return 16;
    case 8:
      return 256;
    default:
      return 0;
  }
}

void ReadOrZero(std::span<BYTE const> bytes, uint64_t offset, std::span<BYTE> out) {
  size_t const at = static_cast<size_t>(std::min<uint64_t>(offset, bytes.size()));
  size_t const count = std::min(out.size(), bytes.size() - at);
  if (count != 0) std::memcpy(out.data(), bytes.data() + at, count);
  std::fill(out.begin() + static_cast<ptrdiff_t>(count), out.end(), BYTE{0});
}

DibView::DibView(HDIB bitmap) : bitmap_(bitmap) {
  if (bitmap == nullptr) return;
  BYTE const* const data = static_cast<BYTE const*>(GlobalLock(bitmap));
  locked_ = data != nullptr;
  if (!locked_) return;
  bytes_ = {data, GlobalSize(bitmap)};
  BYTE raw[kDibHeaderBytes];
  ReadOrZero(bytes_, 0, raw);
  std::memcpy(&header_, raw, sizeof header_);
}

DibView::~DibView() {
  if (locked_ && !keep_locked_) GlobalUnlock(bitmap_);
}

std::span<BYTE const> DibView::Part(uint64_t offset, uint64_t size) const {
  uint64_t const at = std::min<uint64_t>(offset, bytes_.size());
  return bytes_.subspan(static_cast<size_t>(at),
                        static_cast<size_t>(std::min<uint64_t>(size, bytes_.size() - at)));
}

}  // namespace sorrelin

// The bitmap that a decoder rebuilds, and the way of stream bytes into its rows.
#include <sorrelin/image/pixel_order.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/row_stride.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace sorrelin {
namespace {

constexpr uint64_t kLargestBlock = 0xFFFFFFFF;   // bytes: sizes of blocks are 32 bits
constexpr uint64_t kLargestNumber = 0x7FFFFFFF;  // of biWidth and biHeight, which are signed

struct Format {
  WORD bits;
  DWORD entries;
};

Format FormatOf(DWORD kind) {
  if (kind == kKindBilevel) return {1, 2};
  if (kind == kKindIndexed) return {8, 256};
  return {24, 0};
}

}  // namespace

bool CanBeRebuilt(LockedBlock& data, DWORD kind, void const* palette) {
  bool const refused =
      data.bytes().empty() || !IsKnownKind(kind) || (kind == kKindIndexed && palette == nullptr);
  if (refused) data.LeaveLocked();
  return !refused;
}

BilevelColours ColoursOfRawData(bool black_is_1, bool decode_normal) {
  if (black_is_1 == decode_normal) return {255, 0};
  return {0, 255};
}

BilevelColours ColoursOfCcittData(bool black_is_1, bool decode_normal) {
  BilevelColours const raw = ColoursOfRawData(black_is_1, decode_normal);
  return {raw.second, raw.first};
}

RebuiltDib::~RebuiltDib() {
  if (block_ == nullptr) return;
  if (bytes_ != nullptr) GlobalUnlock(block_);
  GlobalFree(block_);
}

bool RebuiltDib::Create(DWORD kind, DWORD width, uint64_t height) {
  if (width > kLargestNumber || height > kLargestNumber) return false;
  Format const format = FormatOf(kind);
  uint64_t const row_bits = uint64_t{width} * format.bits;
  uint64_t const stride = RowStride(width, format.bits);
  uint64_t const rows_at = sizeof(BITMAPINFOHEADER) + uint64_t{format.entries} * sizeof(RGBQUAD);
  if (stride != 0 && height > (kLargestBlock - rows_at) / stride) return false;

  block_ = GlobalAlloc(GHND, static_cast<SIZE_T>(rows_at + height * stride));
  bytes_ = static_cast<BYTE*>(GlobalLock(block_));
  if (bytes_ == nullptr) return false;
  rows_ = bytes_ + rows_at;
  height_ = height;
  stride_ = static_cast<size_t>(stride);
  payload_ = static_cast<size_t>((row_bits + 7) / 8);
  FillHeader(width, format.bits);
  return true;
}

void RebuiltDib::FillHeader(DWORD width, WORD bits) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = static_cast<LONG>(width);
  header.biHeight = static_cast<LONG>(height_);
  header.biPlanes = 1;
  header.biBitCount = bits;
  header.biSizeImage = static_cast<DWORD>(height_ * stride_);
  std::memcpy(bytes_, &header, sizeof header);
}

void RebuiltDib::SetColours(BilevelColours colours) {
  BYTE* const table = bytes_ + sizeof(BITMAPINFOHEADER);
  std::memset(table, colours.first, sizeof(RGBQUAD));
  std::memset(table + sizeof(RGBQUAD), colours.second, sizeof(RGBQUAD));
}

bool RebuiltDib::CopyPalette(HGLOBAL palette) {
  LockedBlock const entries(palette);
  if (!entries) return false;
  size_t const bytes = std::min<size_t>(entries.bytes().size(), kPaletteBytes);
  std::memcpy(bytes_ + sizeof(BITMAPINFOHEADER), entries.bytes().data(), bytes);
  return true;
}

OwnedBlock RebuiltDib::Release() {
  GlobalUnlock(block_);
  bytes_ = rows_ = nullptr;
  return OwnedBlock(std::exchange(block_, nullptr));
}

RowWriter::RowWriter(RebuiltDib& dib, DWORD kind, bool from_top)
    : dib_(dib), swap_(kind == kKindRgb), from_top_(from_top) {}

void RowWriter::Write(std::span<BYTE const> bytes) {
  if (dib_.payload() == 0) return;
  while (!bytes.empty() && row_ < dib_.height()) {
    size_t const count = std::min(bytes.size(), dib_.payload() - column_);
    BYTE* const to = dib_.Row(from_top_ ? dib_.height() - 1 - row_ : row_) + column_;
    if (swap_) {
      CopySwapped(to, bytes.first(count));
    } else {
      std::memcpy(to, bytes.data(), count);
    }
    bytes = bytes.subspan(count);
    column_ += count;
    if (column_ == dib_.payload()) {
      column_ = 0;
      ++row_;
    }
  }
}

}  // namespace sorrelin

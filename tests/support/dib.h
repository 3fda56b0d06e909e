// Bitmaps for tests: packed DIB blocks built from rows of pixels, top row first.
#ifndef TESTS_SUPPORT_DIB_H_
#define TESTS_SUPPORT_DIB_H_

#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/types.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

namespace test {

using Bytes = std::vector<BYTE>;

// Owns a global memory block.
class Block {
 public:
  Block() = default;
  explicit Block(HGLOBAL handle) : handle_(handle) {}
  Block(Block&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Block& operator=(Block&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Block() {
    if (handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE) GlobalFree(handle_);
  }
  HGLOBAL get() const { return handle_; }
  operator HGLOBAL() const { return handle_; }
  // A copy of the first `size` bytes (all by default).
  Bytes Content(size_t size = SIZE_MAX) const {
    size = std::min<size_t>(size, GlobalSize(handle_));
    Bytes bytes(size);
    if (size == 0) return bytes;
    std::memcpy(bytes.data(), GlobalLock(handle_), size);
    GlobalUnlock(handle_);
    return bytes;
  }

 private:
  HGLOBAL handle_ = nullptr;
};

// A movable block with these bytes.
inline Block MakeBlock(Bytes const& bytes) {
  Block block(GlobalAlloc(GHND, bytes.size()));
  if (!bytes.empty()) {
    std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
    GlobalUnlock(block);
  }
  return block;
}

struct DibSpec {
  LONG width = 1;
  LONG height = 1;
  WORD bits = 1;
  LONG x_per_metre = 0;
  LONG y_per_metre = 0;
  std::vector<RGBQUAD> palette =
      {};                 // empty: 2 entries black, white for 1 bit; 256 greys for 8 bits
  DWORD colors_used = 0;  // biClrUsed
};

inline constexpr RGBQUAD kBlack{0, 0, 0, 0};
inline constexpr RGBQUAD kWhite{255, 255, 255, 0};

inline size_t StrideOf(LONG width, int bits) {
  return (static_cast<size_t>(width) * static_cast<size_t>(bits) + 31) / 32 * 4;
}

inline std::vector<RGBQUAD> DefaultPalette(int bits) {
  if (bits == 1) return {kBlack, kWhite};
  std::vector<RGBQUAD> greys;
  for (int i = 0; bits == 8 && i < 256; ++i) {
    BYTE const v = static_cast<BYTE>(i);
    greys.push_back({v, v, v, 0});
  }
  return greys;
}

// `pixel(x, y)` gives the pixel at column x of row y, row 0 on top: the bit, the index, or
// 0xRRGGBB.
inline Block MakeDib(DibSpec const& spec, std::function<DWORD(LONG, LONG)> const& pixel) {
  std::vector<RGBQUAD> const palette =
      spec.palette.empty() ? DefaultPalette(spec.bits) : spec.palette;
  size_t const stride = StrideOf(spec.width, spec.bits);
  size_t const rows_at = sizeof(BITMAPINFOHEADER) + palette.size() * sizeof(RGBQUAD);
  HGLOBAL const handle = GlobalAlloc(GHND, rows_at + stride * static_cast<size_t>(spec.height));
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(handle));
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = spec.width;
  header.biHeight = spec.height;
  header.biPlanes = 1;
  header.biBitCount = spec.bits;
  header.biXPelsPerMeter = spec.x_per_metre;
  header.biYPelsPerMeter = spec.y_per_metre;
  header.biClrUsed = spec.colors_used;
  std::memcpy(bytes, &header, sizeof header);
  if (!palette.empty()) {
    std::memcpy(bytes + sizeof header, palette.data(), palette.size() * sizeof(RGBQUAD));
  }
  for (LONG y = 0; y < spec.height; ++y) {
    BYTE* const row = bytes + rows_at + stride * static_cast<size_t>(spec.height - 1 - y);
    for (LONG x = 0; x < spec.width; ++x) {
      DWORD const value = pixel(x, y);
      size_t const at = static_cast<size_t>(x);
      if (spec.bits == 1) {
        if (value != 0) row[at / 8] = static_cast<BYTE>(row[at / 8] | (0x80 >> (at % 8)));
      } else if (spec.bits == 8) {
        row[at] = static_cast<BYTE>(value);
      } else if (spec.bits == 24) {
        row[3 * at] = static_cast<BYTE>(value);
        row[3 * at + 1] = static_cast<BYTE>(value >> 8);
        row[3 * at + 2] = static_cast<BYTE>(value >> 16);
      }
    }
  }
  GlobalUnlock(handle);
  return Block(handle);
}

}  // namespace test

#endif  // TESTS_SUPPORT_DIB_H_

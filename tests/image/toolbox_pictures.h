// Packed bitmaps of any depth and header for the toolbox tests, and an independent look at their
// pixels.
#ifndef TESTS_IMAGE_TOOLBOX_PICTURES_H_
#define TESTS_IMAGE_TOOLBOX_PICTURES_H_

#include <sorrelin/platform/types.h>
#include <tests/support/dib.h>

#include <cstdint>
#include <cstring>
#include <functional>

namespace test {

// A bitmap without resolution; see MakeDib.
inline Block MakePicture(LONG width, LONG height, WORD bits,
                         std::function<DWORD(LONG, LONG)> const& pixel) {
  DibSpec spec;
  spec.width = width;
  spec.height = height;
  spec.bits = bits;
  return MakeDib(spec, pixel);
}

inline BITMAPINFOHEADER HeaderOf(Bytes const& bytes) {
  BITMAPINFOHEADER header;
  std::memcpy(&header, bytes.data(), sizeof header);
  return header;
}

inline Bytes HeaderBytes(BITMAPINFOHEADER const& header) {
  Bytes bytes(sizeof header);
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes;
}

// The pixels of a picture in a row of bytes, the first one in the highest bits; 15 bits take two
// bytes. Rows are padded to 4 bytes.
struct PixelRows {
  LONG width = 0;
  int bits = 0;

  size_t StoredBits() const { return bits == 15 ? 16 : static_cast<size_t>(bits); }
  size_t Stride() const { return (static_cast<size_t>(width) * StoredBits() + 31) / 32 * 4; }

  // Pixel `x` of block row `y`, its bytes in order as one number.
  uint32_t Get(BYTE const* rows, LONG x, LONG y) const {
    uint32_t value = 0;
    for (size_t i = 0; i < StoredBits(); ++i) {
      size_t const bit = static_cast<size_t>(x) * StoredBits() + i;
      BYTE const byte = rows[static_cast<size_t>(y) * Stride() + bit / 8];
      value = value << 1 | ((byte >> (7 - bit % 8)) & 1u);
    }
    return value;
  }
  void Set(BYTE* rows, LONG x, LONG y, uint32_t value) const {
    for (size_t i = 0; i < StoredBits(); ++i) {
      size_t const bit = static_cast<size_t>(x) * StoredBits() + i;
      BYTE& byte = rows[static_cast<size_t>(y) * Stride() + bit / 8];
      BYTE const mask = static_cast<BYTE>(0x80 >> (bit % 8));
      bool const set = ((value >> (StoredBits() - 1 - i)) & 1u) != 0;
      byte = static_cast<BYTE>(set ? byte | mask : byte & ~mask);
    }
  }
};

// A number that differs from pixel to pixel.
inline uint32_t Scramble(LONG x, LONG y) {
  uint32_t value = static_cast<uint32_t>(x) * 2654435761u + static_cast<uint32_t>(y) * 40503u + 1;
  value ^= value >> 13;
  value *= 2246822519u;
  return value ^ (value >> 16);
}

// A bitmap of any depth with a table as the depth has it and scrambled pixels.
inline Bytes ScrambledPicture(LONG width, LONG height, int bits) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<WORD>(bits);
  header.biXPelsPerMeter = 1000;
  header.biYPelsPerMeter = 2000;
  Bytes bytes = HeaderBytes(header);
  size_t const colors = bits <= 8 ? size_t{1} << bits : 0;
  for (size_t i = 0; i < 4 * colors; ++i) bytes.push_back(static_cast<BYTE>(i * 3 + 1));
  size_t const rows_at = bytes.size();
  PixelRows const pixels{width, bits};
  bytes.resize(rows_at + pixels.Stride() * static_cast<size_t>(height));
  for (LONG y = 0; y < height; ++y) {
    for (LONG x = 0; x < width; ++x) pixels.Set(bytes.data() + rows_at, x, y, Scramble(x, y));
  }
  return bytes;
}

}  // namespace test

#endif  // TESTS_IMAGE_TOOLBOX_PICTURES_H_

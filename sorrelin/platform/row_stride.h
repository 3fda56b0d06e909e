// The size of a bitmap's row, for the library, the siblings and the program.
#ifndef SORRELIN_PLATFORM_ROW_STRIDE_H_
#define SORRELIN_PLATFORM_ROW_STRIDE_H_

#include <cstdint>

namespace sorrelin {

// Bytes of a row of `width` pixels with its padding to 4 bytes. The width has at most 32 bits.
constexpr uint64_t RowStride(uint64_t width, uint64_t bits_per_pixel) {
  return (width * bits_per_pixel + 31) / 32 * 4;
}

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_ROW_STRIDE_H_

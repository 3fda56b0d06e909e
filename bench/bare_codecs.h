// The bare codecs that the benchmarks measure the library against.
#ifndef BENCH_BARE_CODECS_H_
#define BENCH_BARE_CODECS_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <vector>

namespace bench {

// Group 4 data of packed rows, top row first, (width + 7) / 8 bytes each, by libtiff in memory.
std::vector<BYTE> EncodeGroup4(std::vector<BYTE> const& rows, int width, int height);

// Bytes of the JPEG file of a bitmap's rows, lowest row first, padded to 4 bytes, by libjpeg in
// memory: one component at 8 bits, blue, green, red at 24.
size_t EncodeJpeg(BYTE const* rows, int width, int height, int bits, int quality);

}  // namespace bench

#endif  // BENCH_BARE_CODECS_H_

// The bare codecs that the benchmarks measure the library against.
#ifndef BENCH_BARE_CODECS_H_
#define BENCH_BARE_CODECS_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <vector>

namespace bench {

// Group 4 data of packed rows, top row first, (width + 7) / 8 bytes each, by libtiff in memory.
std::vector<BYTE> EncodeGroup4(std::vector<BYTE> const& rows, int width, int height);

// The JPEG file of a bitmap's rows, lowest row first, padded to 4 bytes, by libjpeg in
// memory: one component at 8 bits, blue, green, red at 24.
std::vector<BYTE> EncodeJpeg(BYTE const* rows, int width, int height, int bits, int quality);

// The JPEG file's pixels, by libjpeg in memory: grey, or blue, green, red; `out` has room for them.
void DecodeJpeg(std::vector<BYTE> const& file, BYTE* out);

}  // namespace bench

#endif  // BENCH_BARE_CODECS_H_

// The inflation of a whole zlib stream into memory.
#ifndef SORRELIN_IMAGE_INFLATE_BUFFER_H_
#define SORRELIN_IMAGE_INFLATE_BUFFER_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <span>
#include <vector>

namespace sorrelin {

enum InflateResult {
  kInflated = 0,
  kInflateNoMemory = 2,  // also: more bytes would come out than may
  kInflateNoLock = 3,    // never: the output is no movable block
  kInflateDamaged = 9,   // what zlib refuses, and a stream that does not end in its source
};

// The most bytes that one stream may become, whatever work is left.
inline constexpr uint64_t kMostInflated = 1024 * 1024 * 1024;

// Inflates the zlib stream at the start of `source` into `output`, whose size is then exactly what
// came out; bytes after the stream do not matter. The source is taken to be `source_size` bytes
// long: fewer cut it off, and what `source` lacks reads as 0. A size of 0 gives an empty output.
// On failure the output is empty. What comes out, be it of a stream that fails, is taken off
// `work`; a stream that needs more of it takes all.
InflateResult InflateBuffer(std::span<BYTE const> source, uint64_t source_size,
                            std::vector<BYTE>& output, uint64_t& work);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_INFLATE_BUFFER_H_

// The inflation of a whole zlib stream into memory.
#ifndef SORRELIN_DOCUMENT_INFLATE_BUFFER_H_
#define SORRELIN_DOCUMENT_INFLATE_BUFFER_H_

#include <sorrelin/platform/types.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace sorrelin {

enum InflateResult {
  kInflated = 0,
  kInflateNoMemory = 2,  // also: more than InflateLimit bytes would come out
  kInflateNoLock = 3,    // never: the output is no movable block
  kInflateDamaged = 9,   // what zlib refuses, and a stream that does not end in its source
};

// The most bytes that a source of `bytes` bytes may become. Cross-reference and object streams stay
// far below; a stream made to fill the memory does not.
constexpr uint64_t InflateLimit(uint64_t bytes) {
  return std::min<uint64_t>(16 * 1024 * 1024 + 2 * bytes, INT32_MAX);
}

// Inflates the zlib stream at the start of `source` into `output`, whose size is then exactly what
// came out; bytes behind the stream do not matter. The source is taken to be `source_size` bytes
// long: fewer cut it off, and what `source` lacks reads as 0. A size of 0 gives an empty output.
// On failure the output is empty.
InflateResult InflateBuffer(std::span<BYTE const> source, uint64_t source_size,
                            std::vector<BYTE>& output);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_INFLATE_BUFFER_H_

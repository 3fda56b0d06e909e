// Flate image data.
#ifndef SORRELIN_IMAGE_FLATE_H_
#define SORRELIN_IMAGE_FLATE_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class OwnedBlock;

// The zlib level for a quality argument: 0 to 9 as it is, anything else zlib's default.
int FlateLevel(int quality);

// Compresses `raw` into a new, unlocked block (zlib format); `size` receives the compressed bytes.
// The block's size is raw / 100 (at least 1), doubled until the data fit: callers have always seen
// these sizes. Empty when memory is short or the sizes pass 4 GiB.
OwnedBlock CompressFlate(std::span<BYTE const> raw, int level, DWORD& size);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_FLATE_H_

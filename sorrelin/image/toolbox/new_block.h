// New blocks of the toolbox: movable and zeroed.
#ifndef SORRELIN_IMAGE_TOOLBOX_NEW_BLOCK_H_
#define SORRELIN_IMAGE_TOOLBOX_NEW_BLOCK_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <span>

namespace sorrelin {

// Bytes after the rows of the bitmaps that are made here: part of their blocks' sizes.
inline constexpr uint64_t kSpareBytes = 4;

// A block of `bytes` bytes that starts with `content` as far as it fits, the rest being 0. Null if
// it would pass 4 GiB or memory is short. The caller frees it.
HGLOBAL NewBlock(uint64_t bytes, std::span<BYTE const> content = {});

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_TOOLBOX_NEW_BLOCK_H_

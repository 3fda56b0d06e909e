// Allocation for the toolbox.
#include <sorrelin/image/toolbox/dib_layout.h>
#include <sorrelin/image/toolbox/new_block.h>
#include <sorrelin/platform/block.h>

#include <algorithm>

namespace sorrelin {

HGLOBAL NewBlock(uint64_t bytes, std::span<BYTE const> content) {
  if (bytes > kMaxBlockBytes) return nullptr;
  OwnedBlock block(GlobalAlloc(GHND, static_cast<SIZE_T>(bytes)));
  if (content.empty()) return block.Release();
  {
    LockedBlock const locked(block.get());
    if (!locked) return nullptr;
    std::copy_n(content.data(), std::min(content.size(), locked.bytes().size()),
                locked.bytes().data());
  }
  return block.Release();
}

}  // namespace sorrelin

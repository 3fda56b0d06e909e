// The offsets of the object table in ascending order.
#include <sorrelin/document/object_entry.h>
#include <sorrelin/document/offset_index.h>

#include <algorithm>

namespace sorrelin {

DWORD OffsetIndex::NextAbove(std::span<ObjectEntry const> rows, DWORD offset, DWORD size) {
  if (offsets_.empty()) {
    offsets_.reserve(rows.size());
    for (ObjectEntry const& row : rows) offsets_.push_back(row.nOffset);
    std::sort(offsets_.begin(), offsets_.end());
    offsets_.erase(std::unique(offsets_.begin(), offsets_.end()), offsets_.end());
  }
  auto const next = std::upper_bound(offsets_.begin(), offsets_.end(), offset);
  return next != offsets_.end() && *next < size ? *next : size;
}

void OffsetIndex::Clear() { offsets_ = {}; }

}  // namespace sorrelin

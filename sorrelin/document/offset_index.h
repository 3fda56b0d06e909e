// The offsets of the object table in ascending order, so that the object after a given one is
// found without a walk over the table.
#ifndef SORRELIN_DOCUMENT_OFFSET_INDEX_H_
#define SORRELIN_DOCUMENT_OFFSET_INDEX_H_

#include <sorrelin/platform/types.h>

#include <span>
#include <vector>

namespace sorrelin {

struct ObjectEntry;

// Built from the rows at the first question. Whoever changes a row, or their number, calls Clear.
class OffsetIndex {
 public:
  OffsetIndex() = default;
  // A copy is built anew at its first question, so that copying needs no memory.
  OffsetIndex(OffsetIndex const&) {}
  OffsetIndex& operator=(OffsetIndex const&) {
    Clear();
    return *this;
  }

  // The smallest offset of a row that is above `offset` and below `size`; `size` if there is none.
  DWORD NextAbove(std::span<ObjectEntry const> rows, DWORD offset, DWORD size);

  void Clear();

 private:
  std::vector<DWORD> offsets_;  // ascending, each once
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OFFSET_INDEX_H_

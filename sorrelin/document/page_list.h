// The pages of a document as object numbers, in order.
#ifndef SORRELIN_DOCUMENT_PAGE_LIST_H_
#define SORRELIN_DOCUMENT_PAGE_LIST_H_

#include <sorrelin/document/zero_table.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

// Slots count from 0 in a document that was read, and from 1 in one that is written.
class PageList {
 public:
  static constexpr DWORD kSlots = 30000;

  // Kept: slot 30,000 is the page count; the writer's list starts at slot 1. Slots after it read as
  // 0 and are not written.
  DWORD operator[](DWORD slot) const { return slot == kSlots ? count_ : slots_[slot]; }
  void Set(DWORD slot, DWORD object) {
    if (slot < kSlots) slots_.Change(slot) = object;
    if (slot == kSlots) count_ = object;
  }
  // Leaves the page count.
  void Clear() { slots_.Clear(); }

  // Pages of the document; of one that was read, what its page tree claims.
  DWORD count() const { return count_; }
  DWORD& count() { return count_; }

 private:
  ZeroTable<DWORD, kSlots> slots_;
  DWORD count_ = 0;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_PAGE_LIST_H_

// The object table: for every object number where the object begins, its generation and its state.
#ifndef SORRELIN_DOCUMENT_OBJECT_TABLE_H_
#define SORRELIN_DOCUMENT_OBJECT_TABLE_H_

#include <sorrelin/document/object_entry.h>
#include <sorrelin/document/offset_index.h>
#include <sorrelin/document/zero_table.h>
#include <sorrelin/platform/types.h>

#include <algorithm>
#include <span>

namespace sorrelin {

// Rows that no section, or no object that was written, has filled are 0.
class ObjectTable {
 public:
  static constexpr DWORD kRows = 90050;

  // A number beyond the table has a row of zeros.
  ObjectEntry operator[](DWORD number) const { return rows_[number]; }
  bool IsTaken(DWORD number) const { return (*this)[number].nOffset != 0; }

  // A row to be changed; `number` is below kRows.
  ObjectEntry& Change(DWORD number) {
    by_offset_.Clear();
    return rows_.Change(number);
  }
  void Clear() {
    rows_.Clear();
    by_offset_.Clear();
  }

  // Rows of the document that was read: those after them are not its objects.
  DWORD rows_in_document() const { return rows_in_document_; }
  void SetRowsInDocument(DWORD rows) {
    by_offset_.Clear();
    rows_in_document_ = rows;
  }

  // The smallest offset of those rows that is above `offset` and below `size`; `size` if there is
  // none.
  DWORD NextOffsetAbove(DWORD offset, DWORD size) {
    std::span<ObjectEntry const> const rows = rows_.Changed();
    size_t const in_document = std::min<size_t>(rows_in_document_, rows.size());
    return by_offset_.NextAbove(rows.first(in_document), offset, size);
  }

 private:
  ZeroTable<ObjectEntry, kRows> rows_;
  DWORD rows_in_document_ = 0;
  OffsetIndex by_offset_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OBJECT_TABLE_H_

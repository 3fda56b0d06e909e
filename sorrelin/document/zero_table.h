// A table with a fixed number of rows, which are zeros until they are changed.
#ifndef SORRELIN_DOCUMENT_ZERO_TABLE_H_
#define SORRELIN_DOCUMENT_ZERO_TABLE_H_

#include <sorrelin/platform/types.h>

#include <algorithm>
#include <array>
#include <span>

namespace sorrelin {

// Costs nothing for rows after the last one that was changed: they are neither made, copied nor
// cleared. Copying needs no memory.
template <typename Row, DWORD kRows>
class ZeroTable {
 public:
  ZeroTable() {}
  ZeroTable(ZeroTable const& other) { *this = other; }
  ZeroTable& operator=(ZeroTable const& other) {
    std::copy_n(other.rows_.data(), other.changed_, rows_.data());
    changed_ = other.changed_;
    return *this;
  }

  // A number beyond the table has a row of zeros.
  Row operator[](DWORD number) const { return number < changed_ ? rows_[number] : Row{}; }

  // A row to be changed; `number` is below kRows.
  Row& Change(DWORD number) {
    if (number >= changed_) {
      std::fill(rows_.data() + changed_, rows_.data() + number + 1, Row{});
      changed_ = number + 1;
    }
    return rows_[number];
  }

  void Clear() { changed_ = 0; }

  // The rows through the last one that was changed.
  std::span<Row const> Changed() const { return {rows_.data(), changed_}; }

 private:
  DWORD changed_ = 0;
  std::array<Row, kRows> rows_;  // of no value from `changed_` on
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_ZERO_TABLE_H_

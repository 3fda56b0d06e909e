// PNG predictors of the cross-reference route, held against the rules of PNG (clause 9): they agree
// on whole rows that are not of the Paeth form, in which the library deliberately differs.
//
// The input is colours, bits and columns (2 bytes each), then tagged rows.
#include <sorrelin/image/predictor.h>

#include <vector>

#include "fuzz/fuzz_input.h"

namespace {

using Bytes = std::vector<BYTE>;

constexpr BYTE kPaeth = 4;

// What is added to byte `i` of a row.
unsigned Predicted(BYTE tag, Bytes const& row, Bytes const& above, size_t i, size_t pixel_bytes) {
  unsigned const left = i < pixel_bytes ? 0 : row[i - pixel_bytes];
  constexpr BYTE kSub = 1, kUp = 2, kAverage = 3;
  return tag == kSub ? left : tag == kUp ? above[i] : tag == kAverage ? (left + above[i]) / 2 : 0;
}

// The rows by the rules; empty if they are not whole, or one is of the Paeth form.
Bytes UndoStrictly(Bytes const& data, size_t row_bytes, size_t pixel_bytes) {
  Bytes rows;
  Bytes above(row_bytes);
  if (row_bytes == 0 || data.size() % (row_bytes + 1) != 0) return {};
  for (size_t at = 0; at < data.size(); at += row_bytes + 1) {
    Bytes row(data.begin() + static_cast<ptrdiff_t>(at + 1),
              data.begin() + static_cast<ptrdiff_t>(at + 1 + row_bytes));
    if (data[at] >= kPaeth) return {};
    for (size_t i = 0; i < row_bytes; ++i) {
      row[i] = static_cast<BYTE>(row[i] + Predicted(data[at], row, above, i, pixel_bytes));
    }
    rows.insert(rows.end(), row.begin(), row.end());
    above = row;
  }
  return rows;
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Cursor input({bytes, size});
  sorrelin::PngRowShape shape = {};
  // The upper half of the numbers maps to ones that overflow a multiplication.
  for (DWORD* const field : {&shape.colours, &shape.bits, &shape.columns}) {
    unsigned const value = input.Word();
    *field = value < 0x8000 ? value : value << 16;
  }
  Bytes data(input.Rest().begin(), input.Rest().end());
  Bytes const before = data;
  int const result = sorrelin::DecodePngRows(shape, data);
  uint64_t const bits = uint64_t{shape.colours} * shape.bits;
  if (result == 0 || bits % 8 != 0 || bits == 0 || bits > 4096 || shape.columns > 4096) return 0;
  Bytes const rows = UndoStrictly(before, shape.columns * bits / 8, bits / 8);
  fuzz::Require(std::equal(rows.begin(), rows.end(), data.begin()), "rows differ");
  return 0;
}

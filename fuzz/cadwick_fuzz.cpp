// Group 4 data by way of the sibling's entry points, with memory files at any position; a decode
// for the rows that were found must then succeed.
//
// The input is width, height and position (2 bytes each), then coded data.
#include <siblings/cadwick/cadwick.h>
#include <sorrelin/platform/memory.h>
#include <tests/support/dib_content.h>

#include "fuzz/fuzz_input.h"

namespace {

struct Rows {
  size_t bytes;      // of a row
  int32_t expected;  // the next row's number
};

int TakeRow(BYTE* row, int32_t number, void* user) {
  auto& rows = *static_cast<Rows*>(user);
  fuzz::Require(number == rows.expected++, "rows out of order");
  test::Bytes const copy(row, row + rows.bytes);
  return CCITT_ROW_DONE;
}

// The rows that were delivered; -1 after any failure but the data's end.
int32_t Decode(void* file, int32_t width, int32_t height) {
  Rows rows{(static_cast<size_t>(width) + 7) / 8, 0};
  if (DecodeCcittImage(file, width, height, CCITT_GROUP4, &rows, TakeRow) != 0) {
    fuzz::Require(rows.expected == height, "success without all rows");
    return height;
  }
  return TiffError() == CADWICK_DATA_ENDED ? CcittRowsDecoded() : -1;
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Cursor input({bytes, size});
  int32_t const width = 1 + static_cast<int32_t>(input.Word());
  int32_t const height = 1 + static_cast<int32_t>(input.Word());
  int32_t const position = static_cast<int32_t>(input.Word());
  test::Block const block = test::MakeBlock({input.Rest().begin(), input.Rest().end()});
  void* const file = mOpen(block, static_cast<DWORD>(input.Rest().size()));
  if (file == nullptr) return 0;
  mSeek(file, position % 16, 0);
  int32_t const rows = Decode(file, width, height);
  fuzz::Require(rows <= 0 || Decode(file, width, rows) == rows, "the rows found are not there");
  mClose(file);
  return 0;
}

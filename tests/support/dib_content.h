// What a packed bitmap holds, taken out of its block for comparison.
#ifndef TESTS_SUPPORT_DIB_CONTENT_H_
#define TESTS_SUPPORT_DIB_CONTENT_H_

#include <sorrelin/platform/error.h>
#include <tests/support/dib.h>

#include <cstring>
#include <stdexcept>

namespace test {

// Locks that are held on a block; it is left without. A fixed block of Windows, which is its own
// address, counts none.
inline int TakeLocks(HGLOBAL block) {
  if (GlobalLock(block) == block) return 0;
  GlobalUnlock(block);
  int locks = 0;
  SetLastError(ERROR_SUCCESS);
  while (GlobalUnlock(block) != 0) ++locks;
  return GetLastError() == ERROR_SUCCESS ? locks + 1 : locks;
}

struct DibContent {
  BITMAPINFOHEADER header{};
  Bytes table;
  std::vector<Bytes> rows;  // top row first, with their padding

  Bytes Row(size_t y, size_t bytes) const {
    return {rows[y].begin(), rows[y].begin() + static_cast<ptrdiff_t>(bytes)};
  }
  // The bit, the index, or 0xRRGGBB.
  DWORD Pixel(size_t x, size_t y) const {
    Bytes const& row = rows[y];
    if (header.biBitCount == 1) return row[x / 8] >> (7 - x % 8) & 1;
    if (header.biBitCount == 8) return row[x];
    return static_cast<DWORD>(row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16);
  }
};

// Throws unless the block has exactly the size that its header gives.
inline DibContent ReadDib(Block const& dib) {
  Bytes const bytes = dib.Content();
  DibContent content;
  if (bytes.size() < sizeof content.header) throw std::runtime_error("no bitmap");
  std::memcpy(&content.header, bytes.data(), sizeof content.header);
  int const bits = content.header.biBitCount;
  size_t const rows_at = 40 + (bits == 1 ? 8 : bits == 8 ? 1024 : 0);
  size_t const stride = StrideOf(content.header.biWidth, bits);
  size_t const height = static_cast<size_t>(content.header.biHeight);
  if (bytes.size() != rows_at + height * stride) throw std::runtime_error("size of bitmap");
  auto const at = [&bytes](size_t offset) {
    return bytes.begin() + static_cast<ptrdiff_t>(offset);
  };
  content.table = Bytes(at(40), at(rows_at));
  for (size_t y = height; y-- > 0;) {
    content.rows.emplace_back(at(rows_at + y * stride), at(rows_at + (y + 1) * stride));
  }
  return content;
}

}  // namespace test

#endif  // TESTS_SUPPORT_DIB_CONTENT_H_

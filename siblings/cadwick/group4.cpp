// Limits of pictures and of their coded data.
#include <siblings/cadwick/cadwick.h>
#include <siblings/cadwick/group4.h>
#include <sorrelin/platform/row_stride.h>

namespace sorrelin::cadwick {

bool ValidPicture(int64_t width, int64_t height) {
  constexpr int64_t kMaxPixelBytes = int64_t{1} << 32;
  if (width < 1 || height < 1 || width > CADWICK_MAX_WIDTH || height > INT32_MAX) return false;
  return (width + 7) / 8 * height <= kMaxPixelBytes;
}

uint64_t MaxCodedBytes(Picture picture) {
  constexpr uint64_t kEndMarkAndSlack = 4096;
  uint64_t const padded_row_bytes = RowStride(picture.width, 1);
  return 24 * padded_row_bytes * picture.height + kEndMarkAndSlack;
}

}  // namespace sorrelin::cadwick

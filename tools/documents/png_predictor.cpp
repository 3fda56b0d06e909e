// The five filters of PNG.
#include "tools/documents/png_predictor.h"

#include <cstdlib>

namespace sorrelin::tool {
namespace {

int Paeth(int left, int up, int corner) {
  int const guess = left + up - corner;
  int const to_left = std::abs(guess - left);
  int const to_up = std::abs(guess - up);
  int const to_corner = std::abs(guess - corner);
  if (to_left <= to_up && to_left <= to_corner) return left;
  return to_up <= to_corner ? up : corner;
}

int Predicted(BYTE tag, int left, int up, int corner) {
  switch (tag) {
    case 1:
      return left;
    case 2:
      return up;
    case 3:
      return (left + up) / 2;
    case 4:
      return Paeth(left, up, corner);
    default:
      return 0;
  }
}

}  // namespace

bool UndoPngRow(BYTE tag, std::span<BYTE> row, std::span<BYTE const> above, size_t pixel_bytes) {
  if (tag > 4) return false;
  for (size_t i = 0; i < row.size(); ++i) {
    bool const first = i < pixel_bytes;
    int const left = first ? 0 : row[i - pixel_bytes];
    int const corner = first ? 0 : above[i - pixel_bytes];
    row[i] = static_cast<BYTE>(row[i] + Predicted(tag, left, above[i], corner));
  }
  return true;
}

}  // namespace sorrelin::tool

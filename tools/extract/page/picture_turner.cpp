// Turned pictures. Pixels are moved one by one, since turned pages are few.
#include "tools/extract/page/picture_turner.h"

#include <algorithm>
#include <utility>

namespace sorrelin::tool {
namespace {

constexpr uint64_t kMaxHeldBytes = 0x7FFF0000;

}  // namespace

bool PictureTurner::Begin(PictureForm const& form) {
  form_ = turned_ = form;
  rows_ = 0;
  if (IsSideways(orientation_)) {
    std::swap(turned_.width, turned_.height);
    std::swap(turned_.dpi.x, turned_.dpi.y);
  }
  if (IsHeld()) {
    uint64_t const bytes = uint64_t{form.RowBytes()} * form.height;
    if (bytes > kMaxHeldBytes) return false;
    held_.reserve(static_cast<size_t>(bytes));
  }
  return sink_.Begin(turned_);
}

bool PictureTurner::Row(std::span<BYTE const> row) {
  ++rows_;
  if (IsHeld()) {
    held_.insert(held_.end(), row.begin(), row.end());
    return true;
  }
  if (!IsMirrored()) return sink_.Row(row);
  std::vector<BYTE> mirrored(row.size());
  for (size_t x = 0; x < form_.width; ++x) CopyPixel(row, form_.width - 1 - x, mirrored, x);
  return sink_.Row(mirrored);
}

bool PictureTurner::Finish() {
  if (rows_ < form_.height) return false;
  if (!IsHeld()) return true;
  std::vector<BYTE> row;
  for (DWORD y = 0; y < turned_.height; ++y) {
    row.assign(turned_.RowBytes(), 0);
    FillRow(y, row);
    if (!sink_.Row(row)) break;
  }
  return true;
}

void PictureTurner::CopyPixel(std::span<BYTE const> from, size_t source, std::span<BYTE> to,
                              size_t place) const {
  if (form_.depth == 1) {
    bool const set = (from[source / 8] >> (7 - source % 8) & 1) != 0;
    if (set) to[place / 8] = static_cast<BYTE>(to[place / 8] | 0x80 >> place % 8);
    return;
  }
  size_t const bytes = static_cast<size_t>(form_.depth) / 8;
  std::copy_n(&from[source * bytes], bytes, &to[place * bytes]);
}

// The orientations of EXIF: where the stored rows and columns belong.
void PictureTurner::FillRow(DWORD y, std::span<BYTE> row) const {
  size_t const row_bytes = form_.RowBytes();
  DWORD const last_row = form_.height - 1, last_column = form_.width - 1;
  for (DWORD x = 0; x < turned_.width; ++x) {
    DWORD column = x, line = y;
    if (IsSideways(orientation_)) std::swap(column, line);
    if (orientation_ == 3 || orientation_ == 7 || orientation_ == 8) column = last_column - column;
    if (orientation_ == 3 || orientation_ == 4 || orientation_ == 6 || orientation_ == 7) {
      line = last_row - line;
    }
    CopyPixel(std::span(held_).subspan(line * row_bytes, row_bytes), column, row, x);
  }
}

}  // namespace sorrelin::tool

// Filters rows by types in one pass each, in loops that compilers turn into vector code.
#include "tools/make/coding/png_filter.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace sorrelin::tool {
namespace {

enum FilterType : BYTE { kSub = 1, kUpType = 2, kAverage = 3, kPaeth = 4 };

// One row and the row above it, each after `pixel_bytes` of 0.
struct Rows {
  BYTE const* row;
  BYTE const* above;
  size_t row_bytes;
  size_t pixel_bytes;
};

int PaethOf(int left, int up, int corner) {
  int const to_left = std::abs(up - corner), to_up = std::abs(left - corner);
  int const to_corner = std::abs(left + up - 2 * corner);
  int const nearer = to_up <= to_corner ? up : corner;
  return to_left <= to_up && to_left <= to_corner ? left : nearer;
}

template <typename Predictor>
void FilterRow(Rows const& rows, BYTE* out, Predictor predict) {
  BYTE const* const left = rows.row - rows.pixel_bytes;
  BYTE const* const corner = rows.above - rows.pixel_bytes;
  for (size_t i = 0; i < rows.row_bytes; ++i) {
    out[i] = static_cast<BYTE>(rows.row[i] - predict(left[i], rows.above[i], corner[i]));
  }
}

void Filter(FilterType type, Rows const& rows, BYTE* out) {
  switch (type) {
    case kSub:
      return FilterRow(rows, out, [](int left, int, int) { return left; });
    case kUpType:
      return FilterRow(rows, out, [](int, int up, int) { return up; });
    case kAverage:
      return FilterRow(rows, out, [](int left, int up, int) { return (left + up) / 2; });
    default:
      return FilterRow(rows, out, PaethOf);
  }
}

// The sum of the differences, each without its sign.
uint64_t WeightOf(BYTE const* row, size_t row_bytes) {
  uint64_t sum = 0;
  for (size_t i = 0; i < row_bytes; ++i) {
    sum += static_cast<uint64_t>(std::abs(static_cast<int8_t>(row[i])));
  }
  return sum;
}

class Filtering {
 public:
  Filtering(size_t row_bytes, size_t pixel_bytes)
      : row_bytes_(row_bytes),
        pixel_bytes_(pixel_bytes),
        row_(pixel_bytes + row_bytes),
        above_(pixel_bytes + row_bytes),
        best_(row_bytes),
        next_(row_bytes) {}

  // Appends the filter type and the filtered row.
  void Add(BYTE const* row, Prediction prediction, std::vector<BYTE>& out) {
    std::memcpy(row_.data() + pixel_bytes_, row, row_bytes_);
    Rows const rows = {row_.data() + pixel_bytes_, above_.data() + pixel_bytes_, row_bytes_,
                       pixel_bytes_};
    FilterType type = kUpType;
    if (prediction == Prediction::kUp) {
      Filter(kUpType, rows, best_.data());
    } else {
      type = Best(rows);
    }
    out.push_back(type);
    out.insert(out.end(), best_.begin(), best_.end());
    std::swap(row_, above_);
  }

 private:
  // The type with the least weight, the row filtered so in best_.
  FilterType Best(Rows const& rows) {
    FilterType best = kSub;
    uint64_t least = UINT64_MAX;
    for (FilterType const type : {kSub, kUpType, kAverage, kPaeth}) {
      Filter(type, rows, next_.data());
      uint64_t const weight = WeightOf(next_.data(), row_bytes_);
      if (weight >= least) continue;
      least = weight;
      best = type;
      std::swap(best_, next_);
    }
    return best;
  }

  size_t row_bytes_;
  size_t pixel_bytes_;
  std::vector<BYTE> row_;
  std::vector<BYTE> above_;
  std::vector<BYTE> best_;
  std::vector<BYTE> next_;
};

}  // namespace

std::vector<BYTE> PredictedRows(std::span<BYTE const> bytes, size_t row_bytes, size_t pixel_bytes,
                                Prediction prediction) {
  if (prediction == Prediction::kNone) return {bytes.begin(), bytes.end()};
  size_t const rows = bytes.size() / row_bytes;
  std::vector<BYTE> out;
  out.reserve(rows * (row_bytes + 1));
  Filtering filtering(row_bytes, pixel_bytes);
  for (size_t y = 0; y < rows; ++y) filtering.Add(bytes.data() + y * row_bytes, prediction, out);
  return out;
}

}  // namespace sorrelin::tool

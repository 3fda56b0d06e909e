// PNG prediction of rows (ISO/IEC 15948, 9): each row is stored as its difference from what its
// neighbours suggest, after a byte that names the filter type.
#ifndef TOOLS_MAKE_CODING_PNG_FILTER_H_
#define TOOLS_MAKE_CODING_PNG_FILTER_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <span>
#include <vector>

namespace sorrelin::tool {

enum class Prediction {
  kNone,     // rows as they are, without a filter type
  kUp,       // each row from the one above
  kAdaptive  // for each row the type with the smallest differences
};

// The rows of `bytes`, `row_bytes` each, predicted. Pixels are `pixel_bytes` apart, at least 1.
std::vector<BYTE> PredictedRows(std::span<BYTE const> bytes, size_t row_bytes, size_t pixel_bytes,
                                Prediction prediction);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_CODING_PNG_FILTER_H_

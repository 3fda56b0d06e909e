// DCT coefficients of JPEG files, for comparisons without the rounding of a decoder.
#ifndef TESTS_SUPPORT_COEFFICIENTS_H_
#define TESTS_SUPPORT_COEFFICIENTS_H_

#include <sorrelin/platform/types.h>

#include <array>
#include <vector>

namespace test {

using Block = std::array<short, 64>;
// Rows of blocks of one component.
using Plane = std::vector<std::vector<Block>>;

// The planes of all components of a whole file, as they are coded.
std::vector<Plane> CoefficientsOf(std::vector<BYTE> const& file);

}  // namespace test

#endif  // TESTS_SUPPORT_COEFFICIENTS_H_

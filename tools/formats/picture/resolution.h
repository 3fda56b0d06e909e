// Resolution of a picture, as files state it and as pages need it.
#ifndef TOOLS_FORMATS_PICTURE_RESOLUTION_H_
#define TOOLS_FORMATS_PICTURE_RESOLUTION_H_

#include <algorithm>
#include <cmath>

namespace sorrelin::tool {

inline constexpr double kCentimetresPerInch = 2.54;
inline constexpr int kMaxDotsPerInch = 1'000'000;

// Dots per inch; 0 where a file has none.
struct Resolution {
  int x = 0;
  int y = 0;
  bool operator==(Resolution const&) const = default;
};

// Whole dots per inch; 0 for what is no resolution (negative, not a number, below a half).
inline int WholeDots(double per_inch) {
  if (!(per_inch >= 0.5)) return 0;
  return static_cast<int>(std::lround(std::min<double>(per_inch, kMaxDotsPerInch)));
}

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_RESOLUTION_H_

// Orientations, found from the directions of a picture's sides.
#include "tools/extract/page/placement.h"

#include <cmath>

namespace sorrelin::tool {
namespace {

constexpr int kQuarter = 90;

// A quarter turn clockwise, as a viewer turns the page.
Matrix TurnedPage(Matrix const& m) { return {m.b, -m.a, m.d, -m.c, m.f, -m.e}; }

}  // namespace

Matrix Matrix::Then(Matrix const& next) const {
  return {a * next.a + b * next.c,          a * next.b + b * next.d,
          c * next.a + d * next.c,          c * next.b + d * next.d,
          e * next.a + f * next.c + next.e, e * next.b + f * next.d + next.f};
}

double Matrix::Width() const { return std::hypot(a, b); }

double Matrix::Height() const { return std::hypot(c, d); }

Orientation OrientationOf(Matrix const& matrix, int rotation) {
  Matrix m = matrix;
  for (int turned = 0; turned < rotation; turned += kQuarter) m = TurnedPage(m);
  if (std::abs(m.a) + std::abs(m.d) >= std::abs(m.b) + std::abs(m.c)) {
    if (m.a >= 0) return m.d >= 0 ? 1 : 4;
    return m.d >= 0 ? 2 : 3;
  }
  if (m.b < 0) return m.c >= 0 ? 6 : 5;
  return m.c < 0 ? 8 : 7;
}

bool IsSideways(Orientation orientation) { return orientation > 4; }

}  // namespace sorrelin::tool

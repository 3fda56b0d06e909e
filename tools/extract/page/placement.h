// How a picture is placed on its page: matrices, and the turn by which viewers show it.
#ifndef TOOLS_EXTRACT_PAGE_PLACEMENT_H_
#define TOOLS_EXTRACT_PAGE_PLACEMENT_H_

namespace sorrelin::tool {

// The matrix [a b c d e f] of ISO 32000-1, 8.3.4; points are rows, multiplied from the left.
struct Matrix {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

  // The matrix that applies this one first.
  Matrix Then(Matrix const& next) const;
  // Lengths of the sides of the unit square, across and down.
  double Width() const;
  double Height() const;
};

// As EXIF and TIFF number them; 1 is upright.
using Orientation = int;
inline constexpr Orientation kUpright = 1;

// The orientation in which a picture that fills the unit square is seen through this matrix, on a
// page that viewers turn clockwise by `rotation` degrees. Slanted pictures count as the nearest.
Orientation OrientationOf(Matrix const& matrix, int rotation);

// Whether the orientation exchanges width and height.
bool IsSideways(Orientation orientation);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_PLACEMENT_H_

// Where pages draw their pictures, and how viewers show them.
#ifndef TOOLS_OCR_PICTURE_PLACE_H_
#define TOOLS_OCR_PICTURE_PLACE_H_

#include <optional>
#include <qpdf/QPDFObjectHandle.hh>

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

// The orientation, as EXIF numbers it, in which a picture that fills the unit square is seen
// through this matrix on a page that viewers turn clockwise by `rotation` degrees. Slanted pictures
// count as the nearest.
int OrientationOf(Matrix const& matrix, int rotation);

// From the unit square of the picture that is brought upright to the page, where `place` is that of
// the picture as it is stored.
Matrix UprightPlace(Matrix const& place, int orientation);

// The same for a picture that is turned clockwise by so many quarters.
Matrix TurnedPlace(Matrix const& place, int quarters);

// Degrees, 0 to 270, by which viewers turn a page clockwise.
int RotationOf(QPDFObjectHandle page);

// Where the page draws the first of its pictures, from the unit square to points; nullopt if it
// draws none. Exceptions of libqpdf pass through.
std::optional<Matrix> FirstPicturePlace(QPDFObjectHandle page);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_PICTURE_PLACE_H_

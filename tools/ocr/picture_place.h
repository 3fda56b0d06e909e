// Where pages draw their pictures, and how viewers show them.
#ifndef TOOLS_OCR_PICTURE_PLACE_H_
#define TOOLS_OCR_PICTURE_PLACE_H_

#include <optional>
#include <qpdf/QPDFObjectHandle.hh>

#include "tools/extract/page/placement.h"

namespace sorrelin::tool {

// In pixels.
struct SheetSize {
  double width = 0;
  double height = 0;
};

// From the unit square of a picture to its pixels, counted from its upper left corner.
Matrix PixelPlace(SheetSize const& picture);

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

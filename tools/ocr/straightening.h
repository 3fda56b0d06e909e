// Straight copies of tilted pictures, whose lines the engine finds.
#ifndef TOOLS_OCR_STRAIGHTENING_H_
#define TOOLS_OCR_STRAIGHTENING_H_

#include "tools/ocr/page_scan.h"

namespace sorrelin::tool {

// The place of a picture's straight copy: `degrees` clockwise about the middle of the picture, on a
// sheet that takes all of it.
Matrix StraightPlace(Matrix const& place, SheetSize picture, SheetSize copy, double degrees);

// Turns a picture whose lines are tilted by a few degrees until they are level, on a larger sheet
// that takes all of it; its place follows. False when memory is short.
bool Straighten(ScannedPicture& scanned);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_STRAIGHTENING_H_

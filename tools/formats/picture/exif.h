// The two facts in a camera's EXIF block about how to show a picture.
#ifndef TOOLS_FORMATS_PICTURE_EXIF_H_
#define TOOLS_FORMATS_PICTURE_EXIF_H_

#include <sorrelin/platform/types.h>

#include <span>

#include "tools/formats/picture/resolution.h"

namespace sorrelin::tool {

struct ExifFacts {
  int orientation = 1;  // 1 to 8, as in TIFF; 1: the first row is the top, its first pixel left
  Resolution dpi;
};

// Reads an EXIF block, which is laid out as a TIFF file and starts with its byte order. What is
// damaged counts as absent.
ExifFacts ReadExif(std::span<BYTE const> block);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_EXIF_H_

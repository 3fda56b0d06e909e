// TIFF pages that libtiff decodes to colours, and not the picture library.
#ifndef TOOLS_FORMATS_TIFF_TIFF_COLOURS_H_
#define TOOLS_FORMATS_TIFF_TIFF_COLOURS_H_

#include <tiffio.h>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Whether the page has tiles, or a plane for each colour, which the picture library does not read.
bool IsTiledOrPlanar(TIFF* tiff);

// Whether the page has several samples and its first row is on the left, from the bottom up. The
// picture library turns such pages upside down.
bool IsColourFromLeftBottom(TIFF* tiff);

// Any page upright, without transparency, in black and white, grey or a palette if it is stored
// so. Of a damaged one what can be read. Whether anything was transparent is added to `changes`.
// nullptr if it is of a rarer kind, or memory is short.
PixPtr ReadByLibtiff(TIFF* tiff, Changes& changes);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_COLOURS_H_

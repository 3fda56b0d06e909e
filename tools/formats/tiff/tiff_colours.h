// TIFF pages in tiles or with a plane for each colour.
#ifndef TOOLS_FORMATS_TIFF_TIFF_COLOURS_H_
#define TOOLS_FORMATS_TIFF_TIFF_COLOURS_H_

#include <tiffio.h>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Whether the page is laid out in one of these ways, which the picture library does not read.
bool IsTiledOrPlanar(TIFF* tiff);

// Such a page upright, without transparency, in black and white, grey or a palette if it is stored
// so. Of a damaged one what can be read. Whether anything was transparent is added to `changes`.
// nullptr if it is of a rarer kind, or memory is short.
PixPtr ReadTiledOrPlanar(TIFF* tiff, Changes& changes);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_COLOURS_H_

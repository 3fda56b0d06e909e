// TIFF pages in black and white whose rows are in strips.
#ifndef TOOLS_FORMATS_TIFF_TIFF_BILEVEL_H_
#define TOOLS_FORMATS_TIFF_TIFF_BILEVEL_H_

#include <tiffio.h>

#include "tools/formats/picture/picture.h"

namespace sorrelin::tool {

// Whether the page is black and white, without a palette, in strips.
bool HasBilevelStrips(TIFF* tiff);

// Such a page, upright. Null if a strip cannot be decoded, or memory is short.
PixPtr ReadBilevelStrips(TIFF* tiff);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_BILEVEL_H_

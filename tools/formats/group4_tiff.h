// Black and white pictures as TIFF files, coded by the library, whose coder is several times as
// fast as that of the image library.
#ifndef TOOLS_FORMATS_GROUP4_TIFF_H_
#define TOOLS_FORMATS_GROUP4_TIFF_H_

#include <vector>

#include "tools/formats/picture.h"

namespace sorrelin::tool {

// A file of one page in one strip, in this machine's byte order. Empty if the picture is not black
// and white, or the coder cannot be had.
std::vector<BYTE> Group4Tiff(Pix* pix);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_GROUP4_TIFF_H_

// TIFF pages whose coded data go into a document without decoding.
#ifndef TOOLS_FORMATS_TIFF_TIFF_STORED_H_
#define TOOLS_FORMATS_TIFF_TIFF_STORED_H_

#include <tiffio.h>

#include <optional>

#include "tools/formats/picture/stored_image.h"

namespace sorrelin::tool {

// The current page, if it is Group 4 data in one strip, or JPEG data in any number of strips or
// tiles that can be joined without decoding. Otherwise nullopt.
std::optional<StoredImage> StoredTiffPage(TIFF* tiff);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_STORED_H_

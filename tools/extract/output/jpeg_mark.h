// JPEG files that are shown in an orientation, without loss.
#ifndef TOOLS_EXTRACT_OUTPUT_JPEG_MARK_H_
#define TOOLS_EXTRACT_OUTPUT_JPEG_MARK_H_

#include <span>
#include <vector>

#include "tools/extract/page/placement.h"
#include "tools/formats/jpeg/jpeg_file.h"

namespace sorrelin::tool {

// The file, brought upright from its orientation: turned by whole blocks where that is possible,
// and otherwise marked by EXIF. A mark of its own, which documents do not follow, is taken out; a
// file that needs none of this is left as it is.
std::vector<BYTE> OrientedJpeg(std::span<BYTE const> file, JpegFacts facts,
                               Orientation orientation);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_JPEG_MARK_H_

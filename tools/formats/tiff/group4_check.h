// The check of Group 4 data that go into a document as they are.
#ifndef TOOLS_FORMATS_TIFF_GROUP4_CHECK_H_
#define TOOLS_FORMATS_TIFF_GROUP4_CHECK_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin::tool {

// Whether every row of a picture of this size can be decoded and is as wide as the picture.
bool IsWholeGroup4(std::span<BYTE const> data, int width, int height);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_GROUP4_CHECK_H_

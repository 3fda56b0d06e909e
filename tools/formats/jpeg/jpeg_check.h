// The check of JPEG data that are not going to be decoded to pixels.
#ifndef TOOLS_FORMATS_JPEG_JPEG_CHECK_H_
#define TOOLS_FORMATS_JPEG_JPEG_CHECK_H_

#include <sorrelin/platform/types.h>

#include <span>
#include <string>

namespace sorrelin::tool {

// What libjpeg says of damage anywhere in the coded data, all scans of a progressive file included;
// empty if they are whole.
std::string JpegDamage(std::span<BYTE const> file);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG_JPEG_CHECK_H_

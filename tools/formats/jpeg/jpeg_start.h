// JPEG data that are coded row by row, with the settings that the library codes JPEG pages with.
#ifndef TOOLS_FORMATS_JPEG_JPEG_START_H_
#define TOOLS_FORMATS_JPEG_JPEG_START_H_

#include <cstdio>
// The library's header uses FILE.
#include <jpeglib.h>

namespace sorrelin::tool {

// Starts to code a picture of grey or RGB samples of 8 bits. `info` is created and has its
// destination and its size; `quality` is from 1 to 100, or 0 for the usual one. Errors leave by
// the manager of `info`.
void StartJpeg(jpeg_compress_struct& info, bool has_colours, int quality);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_JPEG_JPEG_START_H_

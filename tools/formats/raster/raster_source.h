// Pages of a print raster as sources of pictures.
#ifndef TOOLS_FORMATS_RASTER_RASTER_SOURCE_H_
#define TOOLS_FORMATS_RASTER_RASTER_SOURCE_H_

#include <memory>
#include <string>

#include "tools/formats/image_source.h"
#include "tools/formats/raster/raster_stream.h"

namespace sorrelin::tool {

// The next page with all its rows; those that the data lack are white. nullptr at the end, and with
// the reason in `problem` if there is none to be read.
std::unique_ptr<ImageSource> TakeRasterPage(RasterStream& stream, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_RASTER_RASTER_SOURCE_H_

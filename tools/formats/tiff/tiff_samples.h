// TIFF pages of 16 bits a sample, of four inks or Lab, and with samples beyond their colours.
#ifndef TOOLS_FORMATS_TIFF_TIFF_SAMPLES_H_
#define TOOLS_FORMATS_TIFF_TIFF_SAMPLES_H_

#include <tiffio.h>

#include <optional>

#include "tools/formats/picture/changes.h"
#include "tools/formats/picture/samples.h"

namespace sorrelin::tool {

// Whether the page has more than the picture library keeps, and can be read here.
bool HasDeepSamples(TIFF* tiff);

// The page as stored, not turned, with what is transparent laid on white: 8 or 16 bits a sample.
// What that changes is added to `changes`. nullopt if data are missing.
std::optional<Samples> ReadTiffSamples(TIFF* tiff, Changes& changes);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_SAMPLES_H_

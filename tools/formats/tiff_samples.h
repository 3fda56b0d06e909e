// TIFF pages of 16 bits a sample, and of four inks, with all that they hold.
#ifndef TOOLS_FORMATS_TIFF_SAMPLES_H_
#define TOOLS_FORMATS_TIFF_SAMPLES_H_

#include <tiffio.h>

#include <optional>

#include "tools/formats/samples.h"

namespace sorrelin::tool {

// Whether the page has more than the picture library keeps, and can be read here.
bool HasDeepSamples(TIFF* tiff);

// The page as stored, not turned, with what is transparent laid on white: 8 or 16 bits a sample.
// nullopt if data are missing.
std::optional<Samples> ReadTiffSamples(TIFF* tiff);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_SAMPLES_H_

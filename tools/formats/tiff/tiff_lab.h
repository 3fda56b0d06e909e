// Pixels of TIFF pages in CIE L*a*b*, converted to sRGB by Little CMS.
#ifndef TOOLS_FORMATS_TIFF_TIFF_LAB_H_
#define TOOLS_FORMATS_TIFF_TIFF_LAB_H_

#include <sorrelin/platform/types.h>
#include <tiffio.h>

#include <cstddef>
#include <span>

namespace sorrelin::tool {

// Whether the page's colours are Lab of a kind that LabToRgb takes.
bool IsLab(TIFF* tiff);

// Converts whole pixels of 8 or 16 bits a sample in place. What follows the three colours of a
// pixel stays. False if memory is short.
bool LabToRgb(TIFF* tiff, size_t samples, size_t sample_bytes, std::span<BYTE> pixels);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_LAB_H_

// Fields of a TIFF directory, with a fallback for those that are missing.
#ifndef TOOLS_FORMATS_TIFF_TIFF_FIELDS_H_
#define TOOLS_FORMATS_TIFF_TIFF_FIELDS_H_

#include <sorrelin/platform/types.h>
#include <tiffio.h>

#include <cstdint>
#include <vector>

#include "tools/formats/picture/icc_profile.h"
#include "tools/formats/picture/resolution.h"

namespace sorrelin::tool {

template <typename Value>
Value FieldOf(TIFF* tiff, uint32_t tag, Value fallback) {
  Value value{};
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : fallback;
}

// One of libtiff's COMPRESSION_*.
inline uint16_t CompressionOf(TIFF* tiff) {
  return FieldOf<uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
}

// The page's resolution as stored; 0 where it has none.
Resolution ResolutionOf(TIFF* tiff);

// 1 to 8; anything else in the file counts as 1.
int OrientationOf(TIFF* tiff);

// The page's colour profile. Null if there is none for `components` components.
ProfileBytes ProfileOf(TIFF* tiff, int components);

// Whether the page has a profile, usable or not.
bool HasProfile(TIFF* tiff);

// A coded strip or tile as it is stored. Empty if the file does not hold it.
std::vector<BYTE> RawPiece(TIFF* tiff, uint32_t index);

// The same of Group 4 data, the highest bit of each byte first.
std::vector<BYTE> RawGroup4(TIFF* tiff, uint32_t index);

// Whether the page is Group 4 data without uncompressed mode.
bool HasPlainGroup4(TIFF* tiff);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_TIFF_TIFF_FIELDS_H_

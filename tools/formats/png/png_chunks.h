// The chunks of a PNG file, and its coded data on their way into a document as they are.
#ifndef TOOLS_FORMATS_PNG_PNG_CHUNKS_H_
#define TOOLS_FORMATS_PNG_PNG_CHUNKS_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "tools/formats/picture/icc_profile.h"
#include "tools/formats/picture/resolution.h"
#include "tools/formats/picture/stored_image.h"

namespace sorrelin::tool {

// What the chunks say. The spans point into the file.
struct PngChunks {
  int width = 0;   // pixels
  int height = 0;  // rows
  int bits = 0;    // of a sample
  int type = 0;    // PNG_COLOR_TYPE_*
  bool interlaced = false;
  bool transparent = false;                 // it has an alpha channel or transparent colours
  bool animated = false;                    // there are pictures beyond the one of its data
  std::span<BYTE const> palette;            // red, green, blue triples
  ProfileBytes profile;                     // null: none that fits the colours
  bool profile_unusable = false;            // there is one that does not
  Resolution dpi;                           // 0 where the file has none
  int orientation = 1;                      // as in EXIF
  std::vector<std::span<BYTE const>> data;  // parts of one zlib stream

  int Samples() const;        // of a pixel, alpha included
  uint64_t RowBytes() const;  // of a row without its filter type
};

// Reads the chunks of a whole file: nullopt if one of them is damaged or a necessary one missing.
std::optional<PngChunks> ReadPngChunks(std::span<BYTE const> file);

// The coded data of a file without interlace and transparency, after a check that they inflate to
// the rows of the picture. Otherwise nullopt.
std::optional<StoredImage> StoredPng(PngChunks const& chunks);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PNG_PNG_CHUNKS_H_

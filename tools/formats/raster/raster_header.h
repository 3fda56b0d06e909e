// Page headers of print rasters: CUPS raster (versions 1 to 3), PWG raster (PWG 5102.4) and Apple
// raster.
//
// CUPS and PWG: 4 bytes "RaSt" (1), "RaS2" (2) or "RaS3" (3), reversed where numbers have their low
// byte first; then for each page a header of 420 (1) or 1796 bytes, and its lines, which are packed
// in version 2. PWG raster is version 2.
// Apple: "UNIRAST" and a 0 byte, the number of pages (4 bytes, 0 if it is not known); then for each
// page a header of 32 bytes and packed lines. High bytes come first.
#ifndef TOOLS_FORMATS_RASTER_RASTER_HEADER_H_
#define TOOLS_FORMATS_RASTER_RASTER_HEADER_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/writer/image_form.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "tools/formats/page_frame.h"
#include "tools/formats/picture/resolution.h"

namespace sorrelin::tool {

inline constexpr size_t kRasterSyncBytes = 4;
inline constexpr size_t kAppleSyncBytes = 8;

// What the first bytes of a stream say.
struct RasterKind {
  bool apple = false;
  bool packed = false;      // lines are run-length coded
  bool low_first = false;   // numbers, and samples of 16 bits
  size_t header_bytes = 0;  // of each page
};

// nullopt if no raster starts so.
std::optional<RasterKind> RasterKindOf(std::span<BYTE const> start);

// How a page asks to be coded, by the number in cupsCompression; the quality is in cupsRowCount.
// Both are what a driver makes of them.
enum class RasterCoding { kAuto, kFlate, kJpeg };

// A page as its rows are read: rows from the top, 0 being black or no ink, as in Samples.
struct RasterPage {
  int width = 0;   // pixels
  int height = 0;  // rows
  ImageColours colours = ImageColours::kGrey;
  int bits = 8;                    // of a sample: 1, 2, 4 or 8, or 16 with the high byte first
  Resolution dpi;                  // 0: not stated
  std::optional<PageFrame> frame;  // of a picture within margins
  RasterCoding coding = RasterCoding::kAuto;
  int quality = 0;  // of JPEG, 1 to 100; 0: the usual one

  size_t RowBytes() const {
    return (static_cast<size_t>(width) * static_cast<size_t>(ComponentsOf(colours) * bits) + 7) / 8;
  }
};

// How the lines of a page are stored.
struct RasterLines {
  size_t bytes = 0;       // of a line, padding included
  size_t unit_bytes = 1;  // that a run repeats
  bool inverted = false;  // the highest sample is black
  BYTE blank = 0;         // fills the rest of a line that is cut short on purpose
};

struct RasterHeader {
  RasterPage page;
  RasterLines lines;
};

// Reads a header of kind.header_bytes bytes. nullopt with the reason in `problem` if the page is of
// a kind that is not known, or its numbers contradict each other.
std::optional<RasterHeader> ReadRasterHeader(RasterKind const& kind, std::span<BYTE const> bytes,
                                             std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_RASTER_RASTER_HEADER_H_

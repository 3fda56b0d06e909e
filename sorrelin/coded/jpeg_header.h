// What a page needs to know of a JPEG file, from its markers (T.81, annex B; JFIF).
#ifndef SORRELIN_CODED_JPEG_HEADER_H_
#define SORRELIN_CODED_JPEG_HEADER_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <span>

namespace sorrelin::coded {

struct JpegHeader {
  LONG width = 0;      // pixels
  LONG height = 0;     // rows
  int components = 0;  // 1 or 3
  DWORD dpi_x = 0;     // dots per inch, 0 if the file has no resolution
  DWORD dpi_y = 0;
};

// Nullopt for data that are no JPEG file of 8 bits a sample with 1 or 3 components.
std::optional<JpegHeader> ReadJpegHeader(std::span<BYTE const> file);

}  // namespace sorrelin::coded

#endif  // SORRELIN_CODED_JPEG_HEADER_H_

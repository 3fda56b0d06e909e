// The pixels of a picture on their way to a file, row by row from the top.
#ifndef TOOLS_EXTRACT_PAGE_PICTURE_FORM_H_
#define TOOLS_EXTRACT_PAGE_PICTURE_FORM_H_

#include <sorrelin/platform/memory_size.h>
#include <sorrelin/platform/types.h>

#include <span>
#include <string>
#include <vector>

#include "tools/formats/picture/resolution.h"

namespace sorrelin::tool {

struct PictureForm {
  DWORD width = 0;   // pixels
  DWORD height = 0;  // rows
  // Bits per pixel: 1, 8 and 16 of palette or grey, 24 and 48 of red, green and blue, 32 and 64 of
  // these and opacity. Samples of 16 bits have their high byte first.
  int depth = 0;
  // At most 256 colours of 1 or 8 bits. Without them, a set bit is black, and 8 bits are tones.
  std::vector<RGBQUAD> palette;
  Resolution dpi;
  std::string profile;  // ICC, of the greys or colours; empty: those of sRGB

  bool HasOpacity() const { return depth == 32 || depth == 64; }
  size_t RowBytes() const {
    return MemorySize((uint64_t{width} * static_cast<unsigned>(depth) + 7) / 8);
  }
};

class PictureSink {
 public:
  virtual ~PictureSink() = default;
  // Then come `form.height` rows of RowBytes each, the first pixel in the highest bits. Either is
  // false if no more is wanted.
  virtual bool Begin(PictureForm const& form) = 0;
  virtual bool Row(std::span<BYTE const> row) = 0;
  // Whether colours may come as they are, with their ICC profile.
  virtual bool TakesProfile() const { return false; }
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_PICTURE_FORM_H_

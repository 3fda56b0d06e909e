// Decoded pixels in the order and packing of documents, of any depth and colours that an image
// dictionary can describe.
#ifndef TOOLS_FORMATS_PICTURE_SAMPLES_H_
#define TOOLS_FORMATS_PICTURE_SAMPLES_H_

#include <leptonica/allheaders.h>
#include <sorrelin/platform/memory_size.h>
#include <sorrelin/platform/types.h>
#include <sorrelin/writer/image_form.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sorrelin::tool {

// Rows from the top, each padded to a byte. Samples follow each other from the highest bit on;
// those of 16 bits have their high byte first. 0 is black, or no ink.
struct Samples {
  int width = 0;   // pixels
  int height = 0;  // rows
  ImageColours colours = ImageColours::kGrey;
  int bits = 8;               // of a sample: 1, 2, 4, 8 or 16
  std::vector<BYTE> palette;  // red, green, blue of each index; then a pixel is one index
  std::vector<BYTE> bytes;

  int Components() const { return palette.empty() ? ComponentsOf(colours) : 1; }
  // Of all rows.
  size_t Bytes() const { return MemorySize(uint64_t{RowBytes()} * static_cast<uint64_t>(height)); }
  size_t RowBytes() const {
    int const bits_per_pixel = Components() * bits;
    return MemorySize((static_cast<uint64_t>(width) * static_cast<uint64_t>(bits_per_pixel) + 7) /
                      8);
  }
};

// The pixels of a picture without alpha: greys and palette indices of up to 8 bits keep their
// depth, 16 bits of grey stay, and a palette of black and white becomes grey. Transparent palette
// entries are laid on white.
Samples SamplesOf(Pix* pix);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_SAMPLES_H_

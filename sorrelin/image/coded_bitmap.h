// A bitmap on its way into a page: looked at and coded under one lock.
#ifndef SORRELIN_IMAGE_CODED_BITMAP_H_
#define SORRELIN_IMAGE_CODED_BITMAP_H_

#include <sorrelin/image/encoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

struct CodedBitmap {
  POINT size = {0, 0};         // pixels
  int bits = 0;                // a pixel: 1, 8 or 24
  POINT dpi = {0, 0};          // dots per inch
  bool first_is_black = true;  // 1 bit: the first colour
  OwnedBlock palette;          // 8 bits: red, green, blue triples
  OwnedBlock data;             // the image stream
  DWORD bytes = 0;             // of it
};

// Errors 2 for null, 4, 5, 9 and 15 for what cannot be a page, and the coder's. A failure without a
// code leaves nothing to write.
Result<CodedBitmap> CodeBitmap(HDIB bitmap, Coding const& coding);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_CODED_BITMAP_H_

// The undoing of PNG row filters (ISO 32000-1, 7.4.4.4).
#ifndef SORRELIN_IMAGE_PREDICTOR_H_
#define SORRELIN_IMAGE_PREDICTOR_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

struct PngRowShape {
  DWORD columns;  // pixels
  DWORD colours;  // components of a pixel
  DWORD bits;     // per component
};

// Undoes PNG row filters in place, one row after the other without their tags; bytes after the last
// row stay as they were. 1, or 0 with the data partly undone.
int DecodePngRows(PngRowShape const& shape, std::span<BYTE> data);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_PREDICTOR_H_

// The order of colour components: PDF has red, green, blue, a bitmap has blue, green, red.
#ifndef SORRELIN_IMAGE_PIXEL_ORDER_H_
#define SORRELIN_IMAGE_PIXEL_ORDER_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

// Copies 24-bit pixels with their first and third byte exchanged. `to` does not overlap them and
// has room for whole pixels; bytes that the last one lacks count as 0.
void CopySwapped(BYTE* to, std::span<BYTE const> pixels);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_PIXEL_ORDER_H_

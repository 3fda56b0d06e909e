// The raw image that the raw and the Flate encoder share.
#ifndef SORRELIN_IMAGE_RAW_IMAGE_H_
#define SORRELIN_IMAGE_RAW_IMAGE_H_

#include <sorrelin/image/dib_view.h>
#include <sorrelin/platform/block.h>

namespace sorrelin {

// Rows from the top, DibPayload() bytes each, components red, green, blue at 24 bits: a new,
// unlocked block and its size in bytes. Empty where there are no bytes (other depths, no rows, a
// negative size), for 4 GiB or more, and when memory is short.
OwnedBlock BuildRawImage(DibView const& dib, DWORD& size);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_RAW_IMAGE_H_

// The colour table of an indexed image, from its lookup stream: red, green, blue for each entry.
#ifndef SORRELIN_DOCUMENT_PALETTE_H_
#define SORRELIN_DOCUMENT_PALETTE_H_

#include <sorrelin/platform/block.h>
#include <sorrelin/platform/types.h>

#include <optional>

namespace sorrelin {

class ObjectLoader;

struct Palette {
  OwnedBlock block;                // none on failure
  std::optional<bool> black_is_1;  // what the table of a 1-bit image makes of its bits
};

// Reads `high` + 1 entries from the stream in object `number`, for an image of `bits` bits per
// component.
Palette ReadPalette(ObjectLoader& objects, DWORD bits, DWORD high, DWORD number);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_PALETTE_H_

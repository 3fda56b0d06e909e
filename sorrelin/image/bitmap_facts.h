// What page assembly asks of a bitmap: its resolution, its polarity and its palette.
#ifndef SORRELIN_IMAGE_BITMAP_FACTS_H_
#define SORRELIN_IMAGE_BITMAP_FACTS_H_

#include <sorrelin/image/dib_view.h>
#include <sorrelin/platform/status.h>

namespace sorrelin {

class OwnedBlock;

// Dots per inch in x and y; 96 by 96 if the bitmap has none, (0, 0) if it is not locked.
POINT Resolution(DibView const& dib);

// Whether the first colour of a 1-bit bitmap is black.
bool FirstColourIsBlack(DibView const& dib);

// A new block of `size` bytes: red, green, blue for each colour table entry. -1 after a failure,
// without a code if the view is not locked. Kept: the bitmap stays locked after code 10.
Result<OwnedBlock> ExtractPalette(DibView& dib, DWORD& size);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_BITMAP_FACTS_H_

// Drawing on bitmaps where the system has no drawing contexts: there is never one.
#include <sorrelin/image/toolbox/dib_image.h>

namespace sorrelin {

HANDLE DibImage::GetDrawingDC() { return nullptr; }

void DibImage::ReleaseDrawingDC() {}

}  // namespace sorrelin

// The choice of a coder.
#include <sorrelin/image/encoders.h>
#include <sorrelin/image/flate.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/codes.h>

namespace sorrelin {

// Kept: values are compared for equality here, so a flag with other bits is refused.
Result<OwnedBlock> EncodeImage(DibView& dib, Coding const& coding, DWORD& size) {
  switch (coding.compression) {
    case PDF_COMPRESSION_NONE:
    case PDF_COMPRESSION_FLAG_NONE:
      return EncodeRaw(dib, size);
    case PDF_COMPRESSION_FLATE:
    case PDF_COMPRESSION_FLAG_FLATE:
      return EncodeFlate(dib, FlateLevel(coding.quality), size);
    case PDF_COMPRESSION_RUN_LENGTH:
    case PDF_COMPRESSION_FLAG_RUN_LENGTH:
      return EncodeRunLength(dib, size);
    case PDF_COMPRESSION_CCITT:
    case PDF_COMPRESSION_FLAG_CCITT:
      return EncodeCcitt(dib, coding.codec, size);
    case PDF_COMPRESSION_JPEG:
    case PDF_COMPRESSION_FLAG_JPEG:
      return EncodeJpeg(dib, coding.codec, coding.quality, size);
    default:
      return Refused(PDF_ERROR_COMPRESSION);
  }
}

}  // namespace sorrelin

// The choice of a decoder.
#include <sorrelin/image/decoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/codes.h>

namespace sorrelin {

namespace {

constexpr DWORD kDecoded = PDF_COMPRESSION_FLAG_NONE | PDF_COMPRESSION_FLAG_FLATE |
                           PDF_COMPRESSION_FLAG_JPEG | PDF_COMPRESSION_FLAG_CCITT |
                           PDF_COMPRESSION_FLAG_RUN_LENGTH;

}  // namespace

bool HasDecoder(DWORD filters) {
  return (filters & PDF_COMPRESSION_FLAG_ASCII_85) == 0 && (filters & kDecoded) != 0;
}

// The order settles what becomes of several filters.
Result<OwnedBlock> DecodeImage(DWORD filters, HGLOBAL data, ImageShape const& shape, bool flipped,
                               Polarity polarity) {
  ImageShape turned = shape;
  if (flipped) turned.height = 0 - shape.height;
  if ((filters & PDF_COMPRESSION_FLAG_NONE) != 0) return DecodeRaw(data, turned, polarity);
  if ((filters & PDF_COMPRESSION_FLAG_FLATE) != 0) return DecodeFlate(data, turned, polarity);
  if ((filters & PDF_COMPRESSION_FLAG_JPEG) != 0) return DecodeJpeg(data);
  if ((filters & PDF_COMPRESSION_FLAG_CCITT) != 0) {
    return DecodeCcitt(data, shape.width, shape.height, polarity);
  }
  return DecodeRunLength(data, shape);
}

}  // namespace sorrelin

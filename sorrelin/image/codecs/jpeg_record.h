// The parameter record that goes to the JPEG sibling with a bitmap.
#ifndef SORRELIN_IMAGE_CODECS_JPEG_RECORD_H_
#define SORRELIN_IMAGE_CODECS_JPEG_RECORD_H_

#include <sorrelin/image/codecs/sibling.h>

#include <array>

namespace sorrelin {

using JpegRecord = std::array<BYTE, JPEG_RECORD_BYTES>;

// Sizes and quality are cut to 16 bits, as the record holds them.
JpegRecord MakeJpegRecord(BITMAPINFOHEADER const& header, int quality);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_CODECS_JPEG_RECORD_H_

// The parameter record that goes to the JPEG sibling with a bitmap.
#include <sorrelin/image/codecs/jpeg_record.h>

#include <algorithm>

namespace sorrelin {

namespace {

// Bytes whose meaning is the coder's.
constexpr BYTE kConstants[] = {3, 0, 0, 0, 0, 0, 2, 0, 2, 0, 0, 0, 0, 0};

void Put(JpegRecord& record, size_t offset, DWORD value, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) record[offset + i] = static_cast<BYTE>(value >> (8 * i));
}

}  // namespace

JpegRecord MakeJpegRecord(BITMAPINFOHEADER const& header, int quality) {
  JpegRecord record{};
  Put(record, JPEG_RECORD_WIDTH, static_cast<DWORD>(header.biWidth), 2);
  Put(record, JPEG_RECORD_HEIGHT, static_cast<DWORD>(header.biHeight), 2);
  Put(record, JPEG_RECORD_X_DENSITY, static_cast<DWORD>(header.biXPelsPerMeter), 4);
  Put(record, JPEG_RECORD_Y_DENSITY, static_cast<DWORD>(header.biYPelsPerMeter), 4);
  Put(record, JPEG_RECORD_QUALITY, static_cast<DWORD>(quality), 2);
  std::copy(std::begin(kConstants), std::end(kConstants), record.begin() + JPEG_RECORD_CONSTANTS);
  return record;
}

}  // namespace sorrelin

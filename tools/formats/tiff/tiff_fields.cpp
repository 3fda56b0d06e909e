// Fields that take more than one tag, or a check.
#include "tools/formats/tiff/tiff_fields.h"

#include <sorrelin/platform/types.h>

#include <cstdint>

namespace sorrelin::tool {

Resolution ResolutionOf(TIFF* tiff) {
  uint16_t const unit = FieldOf<uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  double const scale = unit == RESUNIT_INCH         ? 1.0
                       : unit == RESUNIT_CENTIMETER ? kCentimetresPerInch
                                                    : 0.0;
  float x = 0, y = 0;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) != 1) x = 0;
  if (TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) != 1) y = 0;
  return {WholeDots(x * scale), WholeDots(y * scale)};
}

int OrientationOf(TIFF* tiff) {
  uint16_t const orientation = FieldOf<uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  bool const known = orientation >= ORIENTATION_TOPLEFT && orientation <= ORIENTATION_LEFTBOT;
  return known ? orientation : ORIENTATION_TOPLEFT;
}

ProfileBytes ProfileOf(TIFF* tiff, int components) {
  uint32_t count = 0;
  void* bytes = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &count, &bytes) != 1) return nullptr;
  return UsableProfile({static_cast<BYTE const*>(bytes), count}, components);
}

bool HasProfile(TIFF* tiff) {
  uint32_t count = 0;
  void* bytes = nullptr;
  return TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &count, &bytes) == 1 && count > 0;
}

std::vector<BYTE> RawPiece(TIFF* tiff, uint32_t index) {
  uint64_t const bytes = TIFFGetStrileByteCount(tiff, index);
  uint64_t const all = TIFFGetSizeProc(tiff)(TIFFClientdata(tiff));
  if (bytes == 0 || bytes > all) return {};
  std::vector<BYTE> piece(static_cast<size_t>(bytes));
  tmsize_t const count = static_cast<tmsize_t>(bytes);
  tmsize_t const read = TIFFIsTiled(tiff) != 0 ? TIFFReadRawTile(tiff, index, piece.data(), count)
                                               : TIFFReadRawStrip(tiff, index, piece.data(), count);
  if (read != count) return {};
  return piece;
}

std::vector<BYTE> RawGroup4(TIFF* tiff, uint32_t index) {
  std::vector<BYTE> data = RawPiece(tiff, index);
  if (FieldOf<uint16_t>(tiff, TIFFTAG_FILLORDER, 1) == FILLORDER_LSB2MSB) {
    TIFFReverseBits(data.data(), static_cast<tmsize_t>(data.size()));
  }
  return data;
}

bool HasPlainGroup4(TIFF* tiff) {
  uint32_t const options = FieldOf<uint32_t>(tiff, TIFFTAG_GROUP4OPTIONS, 0);
  return CompressionOf(tiff) == COMPRESSION_CCITTFAX4 && (options & GROUP4OPT_UNCOMPRESSED) == 0;
}

}  // namespace sorrelin::tool

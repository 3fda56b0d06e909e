// Coded strips and tiles through libtiff, which reads them as they are.
#include "tools/formats/tiff/tiff_stored.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "tools/formats/jpeg/jpeg_file.h"
#include "tools/formats/jpeg/jpeg_join.h"
#include "tools/formats/tiff/tiff_bilevel.h"
#include "tools/formats/tiff/tiff_fields.h"

namespace sorrelin::tool {
namespace {

uint32_t WidthOf(TIFF* tiff) { return FieldOf<uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0); }
uint32_t HeightOf(TIFF* tiff) { return FieldOf<uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0); }
uint16_t PhotometricOf(TIFF* tiff) {
  return FieldOf<uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
}
uint16_t SampleCount(TIFF* tiff) { return FieldOf<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1); }
uint16_t BitsOf(TIFF* tiff) { return FieldOf<uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1); }

bool HasSize(TIFF* tiff) {
  constexpr uint32_t kMost = std::numeric_limits<LONG>::max();
  return WidthOf(tiff) >= 1 && HeightOf(tiff) >= 1 && WidthOf(tiff) <= kMost &&
         HeightOf(tiff) <= kMost;
}

StoredImage PageOf(TIFF* tiff, std::shared_ptr<std::vector<BYTE> const> bytes, ImageForm form) {
  StoredImage image;
  image.bytes = *bytes;
  image.owner = std::move(bytes);
  image.width = static_cast<int>(WidthOf(tiff));
  image.height = static_cast<int>(HeightOf(tiff));
  image.profile = ProfileOf(tiff, form.Components());
  image.form = std::move(form);
  image.orientation = OrientationOf(tiff);
  image.dpi = ResolutionOf(tiff);
  return image;
}

// Whether one strip holds the page as plain Group 4 data in black and white.
bool IsGroup4Strip(TIFF* tiff) {
  return HasPlainGroup4(tiff) && HasBilevelStrips(tiff) && TIFFNumberOfStrips(tiff) == 1 &&
         FieldOf<uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0) >= HeightOf(tiff);
}

std::optional<StoredImage> Group4Page(TIFF* tiff) {
  auto const strip = std::make_shared<std::vector<BYTE>>(RawGroup4(tiff, 0));
  if (strip->empty()) return std::nullopt;
  ImageForm form;
  form.filter = ImageFilter::kGroup4;
  form.bits_per_component = 1;
  // A white run is the bit 0 of the file, which such a page shows as black.
  form.inverted = PhotometricOf(tiff) == PHOTOMETRIC_MINISBLACK;
  return PageOf(tiff, strip, form);
}

JpegColours JpegColoursOf(TIFF* tiff) {
  uint16_t const samples = SampleCount(tiff), photometric = PhotometricOf(tiff);
  bool const grey = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
  if (samples == 1 && grey) return JpegColours::kGrey;
  if (samples == 3 && photometric == PHOTOMETRIC_RGB) return JpegColours::kRgb;
  if (samples == 3 && photometric == PHOTOMETRIC_YCBCR) return JpegColours::kYcbcr;
  bool const inks = photometric == PHOTOMETRIC_SEPARATED &&
                    FieldOf<uint16_t>(tiff, TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK;
  return samples == 4 && inks ? JpegColours::kCmyk : JpegColours::kOther;
}

bool IsPlanar(TIFF* tiff) {
  return SampleCount(tiff) > 1 &&
         FieldOf<uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != PLANARCONFIG_CONTIG;
}

// The sides of a strip or tile; false if the file's make no sense.
bool SetPieceSize(TIFF* tiff, JpegPieces& pieces) {
  uint32_t width = WidthOf(tiff);
  uint32_t height = std::min(FieldOf<uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0), HeightOf(tiff));
  if (TIFFIsTiled(tiff) != 0) {
    width = FieldOf<uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
    height = FieldOf<uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
  }
  pieces.piece_width = static_cast<int>(std::min<uint32_t>(width, kMaxJpegSide + 1));
  pieces.piece_height = static_cast<int>(std::min<uint32_t>(height, kMaxJpegSide + 1));
  return width >= 1 && height >= 1;
}

std::shared_ptr<std::vector<BYTE> const> JoinedPage(TIFF* tiff, JpegColours colours) {
  JpegPieces pieces;
  pieces.width = static_cast<int>(WidthOf(tiff));
  pieces.height = static_cast<int>(HeightOf(tiff));
  pieces.colours = colours;
  uint32_t table_bytes = 0;
  void* tables = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_JPEGTABLES, &table_bytes, &tables) == 1) {
    pieces.tables = {static_cast<BYTE const*>(tables), table_bytes};
  }
  if (!SetPieceSize(tiff, pieces)) return nullptr;
  uint32_t const count =
      TIFFIsTiled(tiff) != 0 ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  for (uint32_t i = 0; i < count; ++i) {
    pieces.pieces.push_back(RawPiece(tiff, i));
    if (pieces.pieces.back().empty()) return nullptr;
  }
  return JoinedJpeg(pieces);
}

std::optional<StoredImage> JpegPage(TIFF* tiff) {
  JpegColours const colours = JpegColoursOf(tiff);
  if (BitsOf(tiff) != 8 || IsPlanar(tiff) || colours == JpegColours::kOther) return std::nullopt;
  auto file = JoinedPage(tiff, colours);
  if (file == nullptr) return std::nullopt;
  auto const facts = ReadJpegFacts(*file);
  if (!facts) return std::nullopt;
  ImageForm form = FormOfJpeg(*facts);
  // The file's own word on the polarity counts here, and not the marker's.
  form.inverted = PhotometricOf(tiff) == PHOTOMETRIC_MINISWHITE;
  return PageOf(tiff, std::move(file), std::move(form));
}

}  // namespace

std::optional<StoredImage> StoredTiffPage(TIFF* tiff) {
  if (!HasSize(tiff)) return std::nullopt;
  if (IsGroup4Strip(tiff)) return Group4Page(tiff);
  return CompressionOf(tiff) == COMPRESSION_JPEG ? JpegPage(tiff) : std::nullopt;
}

}  // namespace sorrelin::tool

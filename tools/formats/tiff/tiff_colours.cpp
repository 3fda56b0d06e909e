// TIFF pages that libtiff decodes to colours with alpha, brought back to their own form.
#include "tools/formats/tiff/tiff_colours.h"

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "tools/formats/tiff/tiff_fields.h"

namespace sorrelin::tool {
namespace {

constexpr l_int32 kMiddleGrey = 128;

uint16_t FieldOf(TIFF* tiff, uint32_t tag) {
  uint16_t value = 0;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : uint16_t{0};
}

// From libtiff's order of colours to the picture library's.
void Reorder(Pix* pix) {
  l_uint32* const data = pixGetData(pix);
  size_t const words = static_cast<size_t>(pixGetWpl(pix)) * static_cast<size_t>(pixGetHeight(pix));
  for (size_t i = 0; i < words; ++i) {
    l_uint32 const pixel = data[i];
    data[i] = TIFFGetR(pixel) << L_RED_SHIFT | TIFFGetG(pixel) << L_GREEN_SHIFT |
              TIFFGetB(pixel) << L_BLUE_SHIFT | TIFFGetA(pixel) << L_ALPHA_SHIFT;
  }
  pixSetSpp(pix, 4);
}

// libtiff wants the buffer of uncompressed tiles to have their size, but makes its own buffers a
// multiple of 1024 bytes.
class TileBuffer {
 public:
  explicit TileBuffer(TIFF* tiff) : tiff_(tiff) {
    if (TIFFIsTiled(tiff) == 0 || FieldOf(tiff, TIFFTAG_COMPRESSION) != COMPRESSION_NONE) return;
    uint64_t const size = TIFFTileSize64(tiff);
    if (size == 0 || size > TIFFGetSizeProc(tiff)(TIFFClientdata(tiff))) return;
    bytes_.resize(static_cast<size_t>(size));
    TIFFReadBufferSetup(tiff, bytes_.data(), static_cast<tmsize_t>(size));
  }
  ~TileBuffer() {
    if (!bytes_.empty()) TIFFReadBufferSetup(tiff_, nullptr, kOwnBytes);
  }
  TileBuffer(TileBuffer const&) = delete;
  TileBuffer& operator=(TileBuffer const&) = delete;

 private:
  static constexpr tmsize_t kOwnBytes = 1024;

  TIFF* tiff_;
  std::vector<BYTE> bytes_;
};

// All colours of a page with one sample are greys, unless it has a palette.
PixPtr AsStored(PixPtr pix, TIFF* tiff) {
  if (FieldOf(tiff, TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_PALETTE) return Reindexed(std::move(pix));
  if (FieldOf(tiff, TIFFTAG_SAMPLESPERPIXEL) != 1) return pix;
  PixPtr grey(pixGetRGBComponent(pix.get(), COLOR_RED));
  if (grey == nullptr || FieldOf(tiff, TIFFTAG_BITSPERSAMPLE) != 1) return grey;
  return PixPtr(pixThresholdToBinary(grey.get(), kMiddleGrey));
}

}  // namespace

bool IsTiledOrPlanar(TIFF* tiff) {
  bool const planar = FieldOf(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE &&
                      FieldOf(tiff, TIFFTAG_SAMPLESPERPIXEL) > 1;
  return planar || TIFFIsTiled(tiff) != 0;
}

bool IsColourFromLeftBottom(TIFF* tiff) {
  return FieldOf(tiff, TIFFTAG_ORIENTATION) == ORIENTATION_LEFTBOT &&
         FieldOf(tiff, TIFFTAG_SAMPLESPERPIXEL) > 1;
}

PixPtr ReadByLibtiff(TIFF* tiff, Changes& changes) {
  uint32_t width = 0, height = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
  constexpr uint32_t kMost = std::numeric_limits<int32_t>::max();
  if (width > kMost || height > kMost) return nullptr;
  PixPtr pix(pixCreate(static_cast<int>(width), static_cast<int>(height), 32));
  if (pix == nullptr) return nullptr;
  auto const orientation = static_cast<uint16_t>(OrientationOf(tiff));
  TileBuffer const buffer(tiff);
  // Asked for the page's own orientation, libtiff leaves the rows as they are stored.
  if (TIFFReadRGBAImageOriented(tiff, width, height, pixGetData(pix.get()), orientation, 0) != 1) {
    return nullptr;
  }
  Reorder(pix.get());
  if (BlendOnWhite(pix.get(), true)) changes.Add(Change::kTransparency);
  pix = AsStored(std::move(pix), tiff);
  return pix == nullptr ? nullptr : Upright(std::move(pix), orientation);
}

}  // namespace sorrelin::tool

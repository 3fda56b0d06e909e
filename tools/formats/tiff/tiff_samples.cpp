// Joins strips, tiles and planes into rows of whole pixels, and converts those to samples.
#include "tools/formats/tiff/tiff_samples.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tools/formats/picture/blend.h"
#include "tools/formats/tiff/tiff_fields.h"
#include "tools/formats/tiff/tiff_lab.h"

namespace sorrelin::tool {
namespace {

constexpr uint64_t kMaxBytes = uint64_t{1} << 31;

struct Layout {
  uint32_t width = 0;         // pixels
  uint32_t height = 0;        // rows
  uint32_t piece_width = 0;   // of a strip or tile
  uint32_t piece_height = 0;  // of a strip or tile
  size_t samples = 0;         // of a pixel, alpha and others included
  size_t sample_bytes = 0;
  bool tiled = false;
  bool planar = false;

  size_t PixelBytes() const { return samples * sample_bytes; }
  size_t RowBytes() const { return width * PixelBytes(); }
};

uint16_t ShortOf(TIFF* tiff, uint32_t tag, uint16_t fallback) {
  return FieldOf<uint16_t>(tiff, tag, fallback);
}

Layout LayoutOf(TIFF* tiff) {
  Layout layout;
  layout.width = layout.piece_width = FieldOf<uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
  layout.height = FieldOf<uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
  layout.piece_height = std::min(FieldOf<uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0), layout.height);
  layout.samples = ShortOf(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  layout.sample_bytes = ShortOf(tiff, TIFFTAG_BITSPERSAMPLE, 1) / 8;
  layout.tiled = TIFFIsTiled(tiff) != 0;
  layout.planar = layout.samples > 1 &&
                  ShortOf(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  if (layout.tiled) {
    layout.piece_width = FieldOf<uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
    layout.piece_height = FieldOf<uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
  }
  return layout;
}

// Nothing for colours that are read elsewhere.
std::optional<ImageColours> ColoursOf(TIFF* tiff) {
  switch (ShortOf(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE)) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
      return ImageColours::kGrey;
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
      return ImageColours::kRgb;
    case PHOTOMETRIC_SEPARATED:
      if (ShortOf(tiff, TIFFTAG_INKSET, INKSET_CMYK) != INKSET_CMYK) return std::nullopt;
      return ImageColours::kCmyk;
    default:
      return std::nullopt;
  }
}

// The first of the samples after the colours that is opacity.
void FindAlpha(TIFF* tiff, DeepPixels& form) {
  uint16_t count = 0;
  uint16_t* kinds = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1) return;
  int const extra = std::min<int>(count, form.samples - ComponentsOf(form.colours));
  for (form.alpha_at = 0; form.alpha_at < extra; ++form.alpha_at) {
    uint16_t const kind = kinds[form.alpha_at];
    if (kind == EXTRASAMPLE_ASSOCALPHA) form.alpha = Alpha::kPremultiplied;
    if (kind == EXTRASAMPLE_UNASSALPHA) form.alpha = Alpha::kStraight;
    if (form.alpha != Alpha::kNone) return;
  }
}

// Pixels of all samples as the file has them, in this machine's byte order.
class PixelReader {
 public:
  PixelReader(TIFF* tiff, Layout const& layout) : tiff_(tiff), layout_(layout) {
    tmsize_t const bytes = layout.tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff);
    piece_.resize(static_cast<size_t>(std::max<tmsize_t>(bytes, 0)));
  }

  // Empty if data are missing.
  std::vector<BYTE> Read() {
    std::vector<BYTE> pixels(layout_.RowBytes() * layout_.height);
    uint16_t const planes = layout_.planar ? static_cast<uint16_t>(layout_.samples) : uint16_t{1};
    for (uint16_t plane = 0; plane < planes; ++plane) {
      for (uint32_t y = 0; y < layout_.height; y += layout_.piece_height) {
        for (uint32_t x = 0; x < layout_.width; x += layout_.piece_width) {
          if (!ReadPiece(x, y, plane)) return {};
          CopyPiece(x, y, plane, pixels);
        }
      }
    }
    return pixels;
  }

 private:
  size_t PieceRowBytes() const {
    return layout_.piece_width * (layout_.planar ? layout_.sample_bytes : layout_.PixelBytes());
  }
  size_t RowsAt(uint32_t y) const { return std::min(layout_.piece_height, layout_.height - y); }

  bool ReadPiece(uint32_t x, uint32_t y, uint16_t plane) {
    size_t const needed = RowsAt(y) * PieceRowBytes();
    if (needed > piece_.size()) return false;
    tmsize_t const size = static_cast<tmsize_t>(piece_.size());
    tmsize_t const read =
        layout_.tiled
            ? TIFFReadEncodedTile(tiff_, TIFFComputeTile(tiff_, x, y, 0, plane), piece_.data(),
                                  size)
            : TIFFReadEncodedStrip(tiff_, TIFFComputeStrip(tiff_, y, plane), piece_.data(), size);
    return read >= static_cast<tmsize_t>(needed);
  }

  void CopyPiece(uint32_t x, uint32_t y, uint16_t plane, std::vector<BYTE>& pixels) const {
    size_t const columns = std::min(layout_.piece_width, layout_.width - x);
    for (size_t row = 0; row < RowsAt(y); ++row) {
      BYTE const* const from = piece_.data() + row * PieceRowBytes();
      BYTE* const to = pixels.data() + (y + row) * layout_.RowBytes() + x * layout_.PixelBytes();
      if (layout_.planar) {
        CopyPlane(from, to + plane * layout_.sample_bytes, columns);
      } else {
        std::memcpy(to, from, columns * layout_.PixelBytes());
      }
    }
  }

  void CopyPlane(BYTE const* from, BYTE* to, size_t columns) const {
    for (size_t i = 0; i < columns; ++i, to += layout_.PixelBytes()) {
      std::memcpy(to, from + i * layout_.sample_bytes, layout_.sample_bytes);
    }
  }

  TIFF* tiff_;
  Layout const& layout_;
  std::vector<BYTE> piece_;
};

bool HasReadableSize(Layout const& layout) {
  if (layout.width == 0 || layout.height == 0 || layout.piece_width == 0 ||
      layout.piece_height == 0 || layout.PixelBytes() == 0) {
    return false;
  }
  return uint64_t{layout.width} * layout.PixelBytes() <= kMaxBytes / layout.height &&
         uint64_t{layout.piece_width} * layout.PixelBytes() <= kMaxBytes / layout.piece_height;
}

}  // namespace

bool HasDeepSamples(TIFF* tiff) {
  auto const colours = ColoursOf(tiff);
  uint16_t const bits = ShortOf(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  uint16_t const format = IsLab(tiff) ? uint16_t{SAMPLEFORMAT_UINT}
                                      : ShortOf(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  if (!colours || (bits != 8 && bits != 16) || format != SAMPLEFORMAT_UINT) return false;
  int const samples = ShortOf(tiff, TIFFTAG_SAMPLESPERPIXEL, 1), needed = ComponentsOf(*colours);
  bool const more =
      bits == 16 || *colours == ImageColours::kCmyk || samples > needed || IsLab(tiff);
  return samples >= needed && more;
}

std::optional<Samples> ReadTiffSamples(TIFF* tiff, Changes& changes) {
  Layout const layout = LayoutOf(tiff);
  auto const colours = ColoursOf(tiff);
  if (!colours || !HasReadableSize(layout)) return std::nullopt;
  std::vector<BYTE> pixels = PixelReader(tiff, layout).Read();
  if (pixels.empty()) return std::nullopt;
  if (IsLab(tiff)) {
    changes.Add(Change::kColours);
    if (!LabToRgb(tiff, layout.samples, layout.sample_bytes, pixels)) return std::nullopt;
  }
  DeepPixels deep;
  deep.colours = *colours;
  deep.samples = static_cast<int>(layout.samples);
  deep.sample_bytes = static_cast<int>(layout.sample_bytes);
  FindAlpha(tiff, deep);
  deep.inverted = ShortOf(tiff, TIFFTAG_PHOTOMETRIC, 0) == PHOTOMETRIC_MINISWHITE;
  if (HasTransparency(deep, pixels)) changes.Add(Change::kTransparency);
  int const used = ComponentsOf(deep.colours) + (deep.alpha != Alpha::kNone ? 1 : 0);
  if (deep.samples > used) changes.Add(Change::kExtraSamples);
  return SamplesOf(deep, static_cast<int>(layout.width), static_cast<int>(layout.height), pixels);
}

}  // namespace sorrelin::tool

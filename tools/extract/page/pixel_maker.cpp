// Pixels from samples. Black and white, palettes and tones stay; everything else becomes red, green
// and blue. Samples of 16 bits keep their depth where they are of the device's grey or colours.
#include "tools/extract/page/pixel_maker.h"

#include <sorrelin/platform/memory_size.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "tools/extract/codings/sample_decoder.h"
#include "tools/extract/page/opacity.h"

namespace sorrelin::tool {
namespace {

constexpr BYTE kOpaque = 255;

bool IsGrey(RGBQUAD colour) {
  return colour.rgbRed == colour.rgbGreen && colour.rgbGreen == colour.rgbBlue;
}

// Samples of a row, whatever their depth.
class SampleReader {
 public:
  SampleReader(std::span<BYTE const> row, int bits)
      : row_(row), bits_(static_cast<unsigned>(bits)) {}

  unsigned operator[](size_t i) const {
    if (bits_ == 8) return row_[i];
    if (bits_ == 16) return static_cast<unsigned>(row_[2 * i]) << 8 | row_[2 * i + 1];
    size_t const bit = i * bits_;
    return row_[bit / 8] >> (8 - bits_ - bit % 8) & ((1u << bits_) - 1);
  }

 private:
  std::span<BYTE const> row_;
  unsigned bits_;
};

class PixelMaker : public SampleSink {
 public:
  PixelMaker(PictureShape const& shape, Resolution dpi, PictureSink& sink,
             std::optional<OpacityPlane> const& plane)
      : shape_(shape), sink_(sink), plane_(plane) {
    form_.width = shape.width;
    form_.height = shape.height;
    form_.dpi = dpi;
    SettleFamily();
    if (shape.Components() == 1 && shape.bits <= 8) {
      SettleColours();
    } else {
      SettleDepth();
    }
    base_depth_ = form_.depth;
    has_opacity_ = plane || !shape.mask.key.empty() || shape.alpha_in_data != 0;
    if (!has_opacity_) return;
    form_.depth = form_.depth == 16 || form_.depth == 48 ? 64 : 32;
    form_.palette.clear();
  }

  bool Begin() { return sink_.Begin(form_); }

  void Opacity(std::span<BYTE const> row) override { opacity_.assign(row.begin(), row.end()); }

  bool Row(std::span<BYTE const> row) override {
    MakeBase(row);
    if (has_opacity_) AddOpacity(row);
    ++y_;
    return sink_.Row(IsPassedOn() ? row : std::span<BYTE const>(pixels_));
  }

 private:
  // Colours of a profile that the sink takes are tones of their own.
  void SettleFamily() {
    family_ = shape_.space->family();
    if (shape_.space->profile().empty() || !sink_.TakesProfile()) return;
    form_.profile = shape_.space->profile();
    family_ = shape_.Components() == 1 ? SpaceFamily::kGrey : SpaceFamily::kRgb;
  }

  void SettleColours() {
    colours_ = form_.profile.empty() ? ColoursOf(shape_) : Tones();
    if (shape_.bits == 1) return SettleBits();
    form_.depth = 8;
    bool const grey = std::all_of(colours_.begin(), colours_.end(), IsGrey);
    if (family_ == SpaceFamily::kIndexed || !grey) form_.palette = colours_;
  }

  std::vector<RGBQUAD> Tones() const {
    std::vector<RGBQUAD> tones;
    double const top = (1 << shape_.bits) - 1;
    for (int i = 0; i <= top; ++i) {
      double const share = shape_.decode[0].low + i / top * Span(0);
      BYTE const tone = static_cast<BYTE>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
      tones.push_back({tone, tone, tone, 0});
    }
    return tones;
  }

  // Black and white need no palette.
  void SettleBits() {
    form_.depth = 1;
    bool const set_is_black = IsBlack(colours_[1]) && IsWhite(colours_[0]);
    bool const set_is_white = IsWhite(colours_[1]) && IsBlack(colours_[0]);
    if (!set_is_black && !set_is_white) form_.palette = colours_;
    flip_ = set_is_white ? 0xFF : 0;
  }

  void SettleDepth() {
    bool const deep = shape_.bits == 16;
    if (family_ == SpaceFamily::kGrey) {
      form_.depth = 16;
    } else {
      form_.depth = deep && family_ == SpaceFamily::kRgb ? 48 : 24;
    }
    if (shape_.bits == 16) return;
    // The tone of every value of a component.
    if (family_ != SpaceFamily::kRgb) return;
    double const top = (1 << shape_.bits) - 1;
    for (size_t c = 0; c < 3; ++c) {
      for (int i = 0; i <= top; ++i) {
        double const share = shape_.decode[c].low + i / top * Span(c);
        tones_[c].push_back(static_cast<BYTE>(std::lround(std::clamp(share, 0.0, 1.0) * 255)));
      }
    }
  }

  double Span(size_t component) const {
    return shape_.decode[component].high - shape_.decode[component].low;
  }

  bool IsPassedOn() const {
    if (has_opacity_ || !shape_.usual_decode) return false;
    if (family_ == SpaceFamily::kRgb) return shape_.bits >= 8;
    return family_ == SpaceFamily::kGrey && shape_.bits >= 8;
  }

  void MakeBase(std::span<BYTE const> row) {
    if (IsPassedOn()) return;
    pixels_.assign(MemorySize((uint64_t{form_.width} * static_cast<unsigned>(base_depth_) + 7) / 8),
                   0);
    if (base_depth_ == 1) {
      MakeBits(row);
    } else if (base_depth_ == 8) {
      MakeBytes(row);
    } else if (base_depth_ == 24 && family_ == SpaceFamily::kRgb) {
      SampleReader const samples(row, shape_.bits);
      for (size_t i = 0; i < pixels_.size(); ++i) pixels_[i] = tones_[i % 3][samples[i]];
    } else if (base_depth_ == 24) {
      Convert(row);
    } else {
      MakeWords(row);
    }
  }

  void MakeBits(std::span<BYTE const> row) {
    std::transform(row.begin(), row.end(), pixels_.begin(),
                   [this](BYTE byte) { return static_cast<BYTE>(byte ^ flip_); });
    unsigned const spare = static_cast<unsigned>(pixels_.size() * 8 - form_.width);
    pixels_.back() = static_cast<BYTE>(pixels_.back() & (0xFFu << spare));
  }

  void MakeBytes(std::span<BYTE const> row) {
    SampleReader const samples(row, shape_.bits);
    bool const tones = IsTone();
    for (size_t x = 0; x < pixels_.size(); ++x) {
      unsigned const sample = samples[x];
      pixels_[x] = tones ? colours_[sample].rgbRed : static_cast<BYTE>(sample);
    }
  }

  // Whether the bytes of 8 bits are tones and not places of a palette.
  bool IsTone() const {
    return family_ != SpaceFamily::kIndexed &&
           std::all_of(colours_.begin(), colours_.end(), IsGrey);
  }

  void MakeWords(std::span<BYTE const> row) {
    SampleReader const samples(row, 16);
    size_t const components = shape_.Components();
    for (size_t i = 0; i < pixels_.size() / 2; ++i) {
      double const share =
          shape_.decode[i % components].low + samples[i] / 65535.0 * Span(i % components);
      unsigned const tone = static_cast<unsigned>(std::lround(std::clamp(share, 0.0, 1.0) * 65535));
      pixels_[2 * i] = static_cast<BYTE>(tone >> 8);
      pixels_[2 * i + 1] = static_cast<BYTE>(tone);
    }
  }

  void Convert(std::span<BYTE const> row) {
    size_t const components = shape_.Components();
    SampleReader const samples(row, shape_.bits);
    double const top = (1 << shape_.bits) - 1;
    values_.resize(MemorySize(uint64_t{form_.width} * components));
    for (size_t i = 0; i < values_.size(); ++i) {
      size_t const c = i % components;
      values_[i] = shape_.decode[c].low + samples[i] / top * Span(c);
    }
    shape_.space->ToRgb(values_, pixels_);
  }

  // Red, green and blue of a pixel of the row as it is without opacity, of 8 or 16 bits.
  void BasePixel(size_t x, std::array<unsigned, 3>& rgb) const {
    if (base_depth_ <= 8) {
      size_t const value =
          base_depth_ == 8 ? pixels_[x] : static_cast<size_t>(pixels_[x / 8] >> (7 - x % 8) & 1);
      bool const direct = base_depth_ == 8 && IsTone();
      size_t const place = base_depth_ == 1 && flip_ != 0 ? 1 - value : value;
      RGBQUAD const colour =
          direct ? RGBQUAD{BYTE(value), BYTE(value), BYTE(value), 0} : colours_[place];
      rgb = {colour.rgbRed, colour.rgbGreen, colour.rgbBlue};
      return;
    }
    for (size_t c = 0; c < 3; ++c) {
      size_t const at = base_depth_ == 16 ? x : 3 * x + c;
      rgb[c] = base_depth_ == 24
                   ? pixels_[at]
                   : static_cast<unsigned>(pixels_[2 * at]) << 8 | pixels_[2 * at + 1];
    }
  }

  void AddOpacity(std::span<BYTE const> row) {
    if (plane_) opacity_ = plane_->Row(shape_, y_);
    if (!shape_.mask.key.empty()) ApplyKey(row);
    opacity_.resize(form_.width, kOpaque);
    size_t const bytes = form_.depth == 64 ? 2 : 1;
    std::vector<BYTE> blended(form_.RowBytes());
    std::array<unsigned, 3> rgb{};
    for (size_t x = 0; x < form_.width; ++x) {
      BasePixel(x, rgb);
      if (!matte_.empty() || !shape_.mask.matte.empty()) Unblend(opacity_[x], rgb);
      BYTE* const pixel = &blended[4 * x * bytes];
      for (size_t c = 0; c < 4; ++c) {
        unsigned const sample = c < 3 ? rgb[c] : bytes == 2 ? opacity_[x] * 257u : opacity_[x];
        if (bytes == 2) pixel[2 * c] = static_cast<BYTE>(sample >> 8);
        pixel[bytes * c + bytes - 1] = static_cast<BYTE>(sample);
      }
    }
    pixels_ = std::move(blended);
  }

  // Pixels whose samples are all in the ranges are transparent.
  void ApplyKey(std::span<BYTE const> row) {
    SampleReader const samples(row, shape_.bits);
    size_t const components = shape_.Components();
    opacity_.assign(form_.width, kOpaque);
    for (size_t x = 0; x < form_.width; ++x) {
      bool inside = true;
      for (size_t c = 0; c < components && inside; ++c) {
        auto const [low, high] = shape_.mask.key[c];
        unsigned const sample = samples[x * components + c];
        inside = sample >= low && sample <= high;
      }
      if (inside) opacity_[x] = 0;
    }
  }

  // Takes the colour out with which the picture was blended beforehand (ISO 32000-1, 11.6.5.3).
  void Unblend(BYTE opacity, std::array<unsigned, 3>& rgb) {
    if (matte_.empty()) {
      std::vector<double> colour = shape_.mask.matte;
      colour.resize(shape_.Components());
      matte_.resize(3);
      shape_.space->ToRgb(colour, matte_);
    }
    if (opacity == 0) return;
    double const top = form_.depth == 64 ? 65535 : 255;
    for (size_t c = 0; c < 3; ++c) {
      double const matte = matte_[c] * top / 255;
      double const clear = matte + (rgb[c] - matte) * kOpaque / opacity;
      rgb[c] = static_cast<unsigned>(std::lround(std::clamp(clear, 0.0, top)));
    }
  }

  PictureShape const& shape_;
  PictureSink& sink_;
  std::optional<OpacityPlane> const& plane_;
  PictureForm form_;
  SpaceFamily family_ = SpaceFamily::kOther;
  int base_depth_ = 0;  // of the form without opacity
  bool has_opacity_ = false;
  BYTE flip_ = 0;
  std::vector<RGBQUAD> colours_;
  std::array<std::vector<BYTE>, 3> tones_;
  std::vector<double> values_;
  std::vector<BYTE> pixels_;
  std::vector<BYTE> opacity_;
  std::vector<BYTE> matte_;
  DWORD y_ = 0;
};

}  // namespace

bool IsBlack(RGBQUAD colour) {
  return colour.rgbRed == 0 && colour.rgbGreen == 0 && colour.rgbBlue == 0;
}

bool IsWhite(RGBQUAD colour) {
  return colour.rgbRed == 255 && colour.rgbGreen == 255 && colour.rgbBlue == 255;
}

std::vector<RGBQUAD> ColoursOf(PictureShape const& shape) {
  int const top = (1 << shape.bits) - 1;
  std::vector<double> values;
  for (int i = 0; i <= top; ++i) {
    ComponentRange const range = shape.decode[0];
    values.push_back(range.low + i * (range.high - range.low) / top);
  }
  std::vector<BYTE> rgb(3 * values.size());
  shape.space->ToRgb(values, rgb);
  std::vector<RGBQUAD> colours;
  for (size_t i = 0; i < values.size(); ++i) {
    colours.push_back({rgb[3 * i + 2], rgb[3 * i + 1], rgb[3 * i], 0});
  }
  return colours;
}

bool DecodePicture(PictureShape const& shape, Resolution dpi, PictureSink& sink,
                   std::string& problem) {
  std::optional<OpacityPlane> plane;
  if (shape.mask.soft || shape.mask.stencil) {
    plane = OpacityPlane::Read(shape, problem);
    if (!plane) return false;
  }
  PixelMaker maker(shape, dpi, sink, plane);
  if (!maker.Begin()) {
    problem = "its picture is too large";
    return false;
  }
  return DecodeSamples(shape, maker, problem);
}

}  // namespace sorrelin::tool

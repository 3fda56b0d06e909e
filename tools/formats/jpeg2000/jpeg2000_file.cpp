// JPEG 2000 files through OpenJPEG, with its messages kept back.
#include "tools/formats/jpeg2000/jpeg2000_file.h"

#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "tools/formats/image_source.h"
#include "tools/formats/picture/blend.h"

namespace sorrelin::tool {
namespace {

constexpr double kMetresPerInch = 0.0254;
constexpr size_t kMostHeaderBytes = 4096;  // in which the box of a resolution is looked for

struct Input {
  std::span<BYTE const> file;
  size_t at = 0;
};

OPJ_SIZE_T Read(void* buffer, OPJ_SIZE_T count, void* user) {
  Input& input = *static_cast<Input*>(user);
  size_t const left = input.file.size() - input.at;
  if (left == 0) return static_cast<OPJ_SIZE_T>(-1);
  count = std::min<OPJ_SIZE_T>(count, left);
  std::memcpy(buffer, input.file.data() + input.at, count);
  input.at += count;
  return count;
}

OPJ_OFF_T Skip(OPJ_OFF_T count, void* user) {
  Input& input = *static_cast<Input*>(user);
  auto const left = static_cast<OPJ_OFF_T>(input.file.size() - input.at);
  auto const step = std::clamp<OPJ_OFF_T>(count, 0, left);
  input.at += static_cast<size_t>(step);
  return step == count ? step : OPJ_OFF_T{-1};
}

OPJ_BOOL Seek(OPJ_OFF_T to, void* user) {
  Input& input = *static_cast<Input*>(user);
  if (to < 0 || static_cast<size_t>(to) > input.file.size()) return OPJ_FALSE;
  input.at = static_cast<size_t>(to);
  return OPJ_TRUE;
}

struct CodecDelete {
  void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct StreamDelete {
  void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct ImageDelete {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using Image = std::unique_ptr<opj_image_t, ImageDelete>;

void Keep(char const* message, void* user) {
  std::string& damage = *static_cast<std::string*>(user);
  if (!damage.empty()) return;
  damage = message;
  while (!damage.empty() && damage.back() == '\n') damage.pop_back();
}

// Decodes as much as there is; the first warning or error is the damage. nullptr if there is no
// header.
Image Decode(std::span<BYTE const> file, std::string& damage) {
  Input input{file};
  bool const bare = file.size() > 2 && file[0] == 0xFF && file[1] == 0x4F;
  std::unique_ptr<opj_stream_t, StreamDelete> const stream(opj_stream_default_create(OPJ_TRUE));
  std::unique_ptr<opj_codec_t, CodecDelete> const codec(
      opj_create_decompress(bare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
  if (stream == nullptr || codec == nullptr) return nullptr;
  opj_stream_set_user_data(stream.get(), &input, nullptr);
  opj_stream_set_user_data_length(stream.get(), file.size());
  opj_stream_set_read_function(stream.get(), Read);
  opj_stream_set_skip_function(stream.get(), Skip);
  opj_stream_set_seek_function(stream.get(), Seek);
  opj_set_warning_handler(codec.get(), Keep, &damage);
  opj_set_error_handler(codec.get(), Keep, &damage);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  opj_image_t* header = nullptr;
  if (opj_setup_decoder(codec.get(), &parameters) == OPJ_FALSE ||
      opj_decoder_set_strict_mode(codec.get(), OPJ_FALSE) == OPJ_FALSE ||
      opj_read_header(stream.get(), codec.get(), &header) == OPJ_FALSE) {
    return nullptr;
  }
  Image image(header);
  bool const decoded = opj_decode(codec.get(), stream.get(), image.get()) != OPJ_FALSE &&
                       opj_end_decompress(codec.get(), stream.get()) != OPJ_FALSE;
  if (!decoded && damage.empty()) damage = "its coded data cannot be decoded";
  return image;
}

// Values of one component, whatever its depth and spacing, spread from 0 to `top`.
class Component {
 public:
  Component(opj_image_comp_t const& component, uint32_t top)
      : component_(component),
        offset_(component.sgnd != 0 ? int64_t{1} << (component.prec - 1) : 0),
        own_top_((int64_t{1} << component.prec) - 1),
        top_(top) {}

  uint32_t At(uint32_t x, uint32_t y) const {
    if (component_.data == nullptr) return top_;
    uint32_t const column = std::min(x / component_.dx, component_.w - 1);
    uint32_t const row = std::min(y / component_.dy, component_.h - 1);
    int64_t const value = component_.data[size_t{row} * component_.w + column] + offset_;
    return static_cast<uint32_t>((std::clamp<int64_t>(value, 0, own_top_) * top_ + own_top_ / 2) /
                                 own_top_);
  }

 private:
  opj_image_comp_t const& component_;
  int64_t offset_;
  int64_t own_top_;
  uint32_t top_;
};

constexpr uint32_t kMostComponents = 5;  // inks and alpha
using Pixel = std::array<uint32_t, kMostComponents>;

// ITU-T T.871, 7.
void ToRgb(Pixel& pixel, uint32_t top) {
  double const middle = (top + 1) / 2.0;
  double const y = pixel[0], blue = pixel[1] - middle, red = pixel[2] - middle;
  auto const whole = [&](double value) {
    return static_cast<uint32_t>(std::clamp(value + 0.5, 0.0, static_cast<double>(top)));
  };
  pixel[0] = whole(y + 1.402 * red);
  pixel[1] = whole(y - 0.344136 * blue - 0.714136 * red);
  pixel[2] = whole(y + 1.772 * blue);
}

bool IsYcc(opj_image_t const& image) {
  return image.color_space == OPJ_CLRSPC_SYCC && image.numcomps >= 3;
}

// The library leaves a description of Lab colours in place of a profile, without a length.
bool IsLab(opj_image_t const& image) {
  return image.icc_profile_buf != nullptr && image.icc_profile_len == 0;
}

bool IsKnown(opj_image_t const& image) {
  uint32_t const most = image.color_space == OPJ_CLRSPC_CMYK ? kMostComponents : 4;
  if (image.numcomps < 1 || image.numcomps > most) return false;
  if (image.color_space == OPJ_CLRSPC_EYCC || IsLab(image)) return false;
  for (uint32_t i = 0; i < image.numcomps; ++i) {
    opj_image_comp_t const& component = image.comps[i];
    if (component.w == 0 || component.h == 0 || component.prec < 1 || component.prec > 31 ||
        component.dx == 0 || component.dy == 0) {
      return false;
    }
  }
  return true;
}

uint32_t MostBits(opj_image_t const& image) {
  uint32_t bits = 0;
  for (uint32_t i = 0; i < image.numcomps; ++i) bits = std::max(bits, image.comps[i].prec);
  return bits;
}

// How the components are put together: with 16 bits if one of them has more than 8.
DeepPixels FormOf(opj_image_t const& image) {
  constexpr uint16_t kPremultiplied = 2;
  DeepPixels form;
  bool const inks = image.color_space == OPJ_CLRSPC_CMYK && image.numcomps >= 4;
  form.colours = inks                 ? ImageColours::kCmyk
                 : image.numcomps < 3 ? ImageColours::kGrey
                                      : ImageColours::kRgb;
  form.samples = static_cast<int>(image.numcomps);
  form.sample_bytes = MostBits(image) > 8 ? 2 : 1;
  int const colours = ComponentsOf(form.colours);
  if (form.samples > colours) {
    bool const scaled = image.comps[colours].alpha == kPremultiplied;
    form.alpha = scaled ? Alpha::kPremultiplied : Alpha::kStraight;
  }
  return form;
}

// Rows of pixels as the form says; sYCC becomes RGB.
std::vector<BYTE> PixelsOf(opj_image_t const& image, DeepPixels const& form, uint32_t width,
                           uint32_t height) {
  uint32_t const top = form.sample_bytes == 1 ? 0xFF : 0xFFFF;
  std::vector<Component> components;
  for (uint32_t i = 0; i < image.numcomps; ++i) components.emplace_back(image.comps[i], top);
  std::vector<BYTE> pixels(size_t{width} * height * components.size() *
                           static_cast<size_t>(form.sample_bytes));
  BYTE* out = pixels.data();
  Pixel pixel{};
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      for (size_t i = 0; i < components.size(); ++i) pixel[i] = components[i].At(x, y);
      if (IsYcc(image)) ToRgb(pixel, top);
      for (size_t i = 0; i < components.size(); ++i, out += form.sample_bytes) {
        uint16_t const value = static_cast<uint16_t>(pixel[i]);
        if (form.sample_bytes == 1) *out = static_cast<BYTE>(value);
        if (form.sample_bytes == 2) std::memcpy(out, &value, sizeof value);
      }
    }
  }
  return pixels;
}

// nullopt if the picture is too large.
std::optional<Samples> ReadSamples(opj_image_t const& image, Changes& changes) {
  constexpr uint64_t kMostBytes = uint64_t{1} << 31;
  uint64_t const width = uint64_t{image.comps[0].w} * image.comps[0].dx;
  uint64_t const height = uint64_t{image.comps[0].h} * image.comps[0].dy;
  if (width * 2 * kMostComponents > kMostBytes / height) return std::nullopt;
  DeepPixels const form = FormOf(image);
  auto const pixels =
      PixelsOf(image, form, static_cast<uint32_t>(width), static_cast<uint32_t>(height));
  if (HasTransparency(form, pixels)) changes.Add(Change::kTransparency);
  if (MostBits(image) > 16) changes.Add(Change::kDepth);
  if (IsYcc(image)) changes.Add(Change::kColours);
  return SamplesOf(form, static_cast<int>(width), static_cast<int>(height), pixels);
}

void ReadProfile(opj_image_t const& image, Picture& picture) {
  if (image.icc_profile_buf == nullptr) return;
  picture.profile = UsableProfile({image.icc_profile_buf, image.icc_profile_len},
                                  ComponentsOf(picture.samples->colours));
  if (picture.profile == nullptr) picture.changes.Add(Change::kProfile);
}

// The box of the capture or display resolution (ISO/IEC 15444-1, I.5.3.7): vertical and horizontal
// numerators and denominators of 2 bytes, exponents of 1, in pixels a metre.
Resolution ResolutionOf(std::span<BYTE const> file) {
  auto const head = file.first(std::min(file.size(), kMostHeaderBytes));
  for (std::array<BYTE, 4> const name :
       {std::array<BYTE, 4>{'r', 'e', 's', 'c'}, std::array<BYTE, 4>{'r', 'e', 's', 'd'}}) {
    auto const found = std::search(head.begin(), head.end(), name.begin(), name.end());
    if (head.end() - found < 14) continue;
    BYTE const* const at = &*found + 4;
    auto const dots = [&](size_t fraction, size_t exponent) {
      double value = (at[fraction] << 8 | at[fraction + 1]);
      int const divisor = at[fraction + 2] << 8 | at[fraction + 3];
      if (divisor == 0) return 0;
      value /= divisor;
      for (int e = static_cast<int8_t>(at[exponent]); e > 0; --e) value *= 10;
      for (int e = static_cast<int8_t>(at[exponent]); e < 0; ++e) value /= 10;
      return WholeDots(value * kMetresPerInch);
    };
    return {dots(4, 9), dots(0, 8)};
  }
  return {};
}

}  // namespace

std::string Jpeg2000Damage(std::span<BYTE const> file) {
  std::string damage;
  Image const image = Decode(file, damage);
  return image == nullptr && damage.empty() ? "its header cannot be read" : damage;
}

std::optional<Picture> DecodeJpeg2000(std::span<BYTE const> file, std::string& problem) {
  Picture picture;
  Image const image = Decode(file, picture.damage);
  problem = image == nullptr ? DamagedHeader("JPEG 2000") : kCannotDecode;
  if (image == nullptr || !IsKnown(*image)) return std::nullopt;
  picture.samples = ReadSamples(*image, picture.changes);
  if (!picture.samples) return std::nullopt;
  ReadProfile(*image, picture);
  picture.dpi = ResolutionOf(file);
  return picture;
}

}  // namespace sorrelin::tool

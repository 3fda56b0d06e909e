// JPEG 2000 files through OpenJPEG, with its messages kept back.
#include "tools/formats/jpeg2000_file.h"

#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "tools/formats/image_source.h"

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

// Samples of one component, whatever its depth and spacing, as tones from 0 to 255.
class Component {
 public:
  explicit Component(opj_image_comp_t const& component)
      : component_(component),
        offset_(component.sgnd != 0 ? int64_t{1} << (component.prec - 1) : 0),
        top_((int64_t{1} << component.prec) - 1) {}

  int Tone(uint32_t x, uint32_t y) const {
    if (component_.data == nullptr) return 255;
    uint32_t const column = std::min(x / component_.dx, component_.w - 1);
    uint32_t const row = std::min(y / component_.dy, component_.h - 1);
    int64_t const value = component_.data[size_t{row} * component_.w + column] + offset_;
    return static_cast<int>((std::clamp<int64_t>(value, 0, top_) * 255 + top_ / 2) / top_);
  }

 private:
  opj_image_comp_t const& component_;
  int64_t offset_;
  int64_t top_;
};

BYTE Clamped(double value) { return static_cast<BYTE>(std::clamp(value + 0.5, 0.0, 255.0)); }

// ITU-T T.871, 7.
l_uint32 FromYcc(std::array<int, 4> const& tone) {
  double const y = tone[0], blue = tone[1] - 128, red = tone[2] - 128;
  l_uint32 pixel = 0;
  composeRGBPixel(Clamped(y + 1.402 * red), Clamped(y - 0.344136 * blue - 0.714136 * red),
                  Clamped(y + 1.772 * blue), &pixel);
  return pixel;
}

l_uint32 FromInks(std::array<int, 4> const& tone) {
  auto const light = [&](size_t i) { return (255 - tone[i]) * (255 - tone[3]) / 255; };
  l_uint32 pixel = 0;
  composeRGBPixel(light(0), light(1), light(2), &pixel);
  return pixel;
}

bool IsKnown(opj_image_t const& image) {
  if (image.numcomps < 1 || image.numcomps > 4) return false;
  for (uint32_t i = 0; i < image.numcomps; ++i) {
    opj_image_comp_t const& component = image.comps[i];
    if (component.w == 0 || component.h == 0 || component.prec < 1 || component.prec > 31 ||
        component.dx == 0 || component.dy == 0) {
      return false;
    }
  }
  return true;
}

PixPtr PixOf(opj_image_t const& image, bool& alpha) {
  uint32_t const width = image.comps[0].w * image.comps[0].dx;
  uint32_t const height = image.comps[0].h * image.comps[0].dy;
  bool const grey = image.numcomps < 3;
  bool const inks = image.color_space == OPJ_CLRSPC_CMYK && image.numcomps == 4;
  bool const ycc = image.color_space == OPJ_CLRSPC_SYCC && !grey;
  alpha = image.numcomps == 2 || (image.numcomps == 4 && !inks);
  PixPtr pix(
      pixCreate(static_cast<int>(width), static_cast<int>(height), image.numcomps == 1 ? 8 : 32));
  if (pix == nullptr) return nullptr;
  std::vector<Component> components;
  for (uint32_t i = 0; i < image.numcomps; ++i) components.emplace_back(image.comps[i]);
  std::array<int, 4> tone{};
  for (uint32_t y = 0; y < height; ++y) {
    l_uint32* const line = pixGetData(pix.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix.get());
    for (uint32_t x = 0; x < width; ++x) {
      for (size_t i = 0; i < components.size(); ++i) tone[i] = components[i].Tone(x, y);
      if (image.numcomps == 1) {
        SET_DATA_BYTE(line, x, static_cast<l_uint8>(tone[0]));
        continue;
      }
      if (inks || ycc) {
        line[x] = inks ? FromInks(tone) : FromYcc(tone);
      } else {
        composeRGBPixel(tone[0], tone[grey ? 0 : 1], tone[grey ? 0 : 2], line + x);
      }
      l_uint32 const opacity = static_cast<l_uint32>(alpha ? tone[image.numcomps - 1] : 255);
      line[x] = (line[x] & ~l_uint32{0xFF}) | opacity << L_ALPHA_SHIFT;
    }
  }
  return pix;
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

std::optional<Picture> DecodeJpeg2000(std::span<BYTE const> file) {
  Picture picture;
  Image const image = Decode(file, picture.damage);
  if (image == nullptr || !IsKnown(*image)) return std::nullopt;
  bool alpha = false;
  picture.pix = PixOf(*image, alpha);
  if (picture.pix == nullptr) return std::nullopt;
  if (alpha) {
    pixSetSpp(picture.pix.get(), 4);
    BlendOnWhite(picture.pix.get(), false);
    picture.changes.Add(Change::kTransparency);
  }
  if (image->comps[0].prec > 8) picture.changes.Add(Change::kDepth);
  if (image->color_space == OPJ_CLRSPC_CMYK) picture.changes.Add(Change::kColours);
  if (image->icc_profile_buf != nullptr) picture.changes.Add(Change::kProfile);
  picture.dpi = ResolutionOf(file);
  return picture;
}

std::string UndecodedJpeg2000() { return kCannotDecode; }

}  // namespace sorrelin::tool

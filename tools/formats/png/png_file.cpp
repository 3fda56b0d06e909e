// PNG files through libpng, with its messages kept back.
#include "tools/formats/png/png_file.h"

#include <png.h>

#include <array>
#include <bit>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tools/formats/picture/blend.h"

namespace sorrelin::tool {
namespace {

constexpr double kMetresPerInch = 0.0254;

struct Input {
  std::span<BYTE const> left;
};

void Give(png_structp png, png_bytep out, size_t bytes) {
  Input& input = *static_cast<Input*>(png_get_io_ptr(png));
  if (bytes > input.left.size()) png_error(png, "the file ends early");
  std::memcpy(out, input.left.data(), bytes);
  input.left = input.left.subspan(bytes);
}

// libpng's first message about damage. Its other warnings are about odd values in whole chunks.
struct Damage {
  char text[200];

  void Keep(char const* message) {
    if (text[0] == '\0') std::snprintf(text, sizeof text, "%s", message);
  }

  void KeepWarning(char const* message) {
    constexpr std::array<char const*, 4> kLost = {"CRC", "IDAT", "image data", "compressed data"};
    for (char const* word : kLost) {
      if (std::strstr(message, word) != nullptr) Keep(message);
    }
  }
};

// One decompressor. libpng leaves it by a jump when it gives up, so whatever runs inside Try has no
// destructors of its own.
class PngReader {
 public:
  explicit PngReader(std::span<BYTE const> file) : input_{file} {
    png_ = png_create_read_struct(
        PNG_LIBPNG_VER_STRING, &damage_,
        [](png_structp png, char const* message) {
          static_cast<Damage*>(png_get_error_ptr(png))->Keep(message);
          png_longjmp(png, 1);
        },
        [](png_structp png, char const* message) {
          static_cast<Damage*>(png_get_error_ptr(png))->KeepWarning(message);
        });
    if (png_ == nullptr) return;
    info_ = png_create_info_struct(png_);
    // Data with a wrong CRC are used, and the warning is kept.
    png_set_crc_action(png_, PNG_CRC_WARN_USE, PNG_CRC_WARN_DISCARD);
    png_set_benign_errors(png_, 1);
  }
  ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
  PngReader(PngReader const&) = delete;
  PngReader& operator=(PngReader const&) = delete;

  // Reads the header. Rows of deep pictures come as samples of 8 or 16 bits in this machine's
  // order. Others come as the picture library lays them out on a machine whose words start with
  // their highest byte: packed indices or greys, or red, green, blue, filler.
  bool ReadHeader() {
    return info_ != nullptr && Try([&] {
             png_set_read_fn(png_, &input_, Give);
             png_read_info(png_, info_);
             bits_ = png_get_bit_depth(png_, info_);
             if (IsDeep() && IsTransparent()) png_set_tRNS_to_alpha(png_);
             if (bits_ == 16 && std::endian::native == std::endian::little) png_set_swap(png_);
             bool const words = type() == PNG_COLOR_TYPE_RGB && !IsDeep();
             if (words) png_set_filler(png_, 0, PNG_FILLER_AFTER);
             passes_ = png_set_interlace_handling(png_);
             png_read_update_info(png_, info_);
           });
  }

  // Each row is read once a pass, and a later pass keeps what an earlier one has put there. Rows
  // that cannot be read stay as they are.
  void ReadRows(BYTE* rows, size_t stride) {
    Try([&] {
      for (int pass = 0; pass < passes_; ++pass) {
        for (int y = 0; y < height(); ++y) {
          png_read_row(png_, rows + static_cast<size_t>(y) * stride, nullptr);
        }
      }
      png_read_end(png_, nullptr);
    });
  }

  // What is wrong with the data read so far; empty: nothing.
  std::string damage() const { return damage_.text; }

  int width() const { return static_cast<int>(png_get_image_width(png_, info_)); }
  int height() const { return static_cast<int>(png_get_image_height(png_, info_)); }
  int type() const { return png_get_color_type(png_, info_); }
  bool IsPalette() const { return type() == PNG_COLOR_TYPE_PALETTE; }
  bool HasAlpha() const { return (type() & PNG_COLOR_MASK_ALPHA) != 0; }
  bool IsTransparent() const {
    return HasAlpha() || png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
  }
  // Whether a pix cannot hold all that the samples say.
  bool IsDeep() const { return bits_ == 16 || HasAlpha(); }
  // Of a pixel of the rows that come.
  int SampleCount() const { return png_get_channels(png_, info_); }
  size_t RowBytes() const { return png_get_rowbytes(png_, info_); }
  int SampleBytes() const { return bits_ / 8; }
  int Depth() const { return png_get_bit_depth(png_, info_) * png_get_channels(png_, info_); }

  Resolution Dpi() const {
    return {WholeDots(png_get_x_pixels_per_meter(png_, info_) * kMetresPerInch),
            WholeDots(png_get_y_pixels_per_meter(png_, info_) * kMetresPerInch)};
  }

  std::span<png_color const> Palette() const {
    png_colorp entries = nullptr;
    int count = 0;
    if (png_get_PLTE(png_, info_, &entries, &count) == 0) count = 0;
    return {entries, static_cast<size_t>(count)};
  }

  // The alpha of the first palette entries.
  std::span<BYTE const> PaletteAlpha() const {
    png_bytep alpha = nullptr;
    int count = 0;
    if (png_get_tRNS(png_, info_, &alpha, &count, nullptr) == 0 || alpha == nullptr) count = 0;
    return {alpha, static_cast<size_t>(count)};
  }

  // The one tone or colour that is transparent, or null.
  png_color_16 const* Key() const {
    png_color_16p key = nullptr;
    if (png_get_tRNS(png_, info_, nullptr, nullptr, &key) == 0) return nullptr;
    return key;
  }

 private:
  template <typename Work>
  bool Try(Work work) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    work();
    return true;
  }

  Input input_;
  Damage damage_{};
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  int bits_ = 0;  // of a sample in the file
  int passes_ = 1;
};

// Every index has a colour: what the file leaves out is black.
PixColormap* MapOf(PngReader const& reader) {
  PixColormap* const map = pixcmapCreate(reader.Depth());
  if (map == nullptr) return nullptr;
  std::span<png_color const> const palette = reader.Palette();
  std::span<BYTE const> const alpha = reader.PaletteAlpha();
  size_t const entries = size_t{1} << reader.Depth();
  for (size_t i = 0; i < entries; ++i) {
    png_color const entry = i < palette.size() ? palette[i] : png_color{};
    BYTE const opacity = i < alpha.size() ? alpha[i] : BYTE{255};
    pixcmapAddRGBA(map, entry.red, entry.green, entry.blue, opacity);
  }
  return map;
}

// The pixel value of the key in the decoded picture, in which a set bit is black.
l_uint32 PixelOfKey(int depth, png_color_16 const& key) {
  if (depth == 1) return key.gray == 0 ? 1 : 0;
  if (depth != 32) return key.gray;
  l_uint32 pixel = 0;
  composeRGBPixel(key.red & 0xFF, key.green & 0xFF, key.blue & 0xFF, &pixel);
  return pixel;
}

// Returns whether any pixel has the key.
bool WhitenKey(Pix* pix, png_color_16 const& key) {
  int const depth = pixGetDepth(pix);
  l_uint32 const mask = depth == 32 ? ~l_uint32{0xFF} : (l_uint32{1} << depth) - 1;
  l_uint32 const clear = PixelOfKey(depth, key);
  l_uint32 const white = depth == 1 ? 0 : mask;
  bool found = false;
  for (int y = 0; y < pixGetHeight(pix); ++y) {
    for (int x = 0; x < pixGetWidth(pix); ++x) {
      l_uint32 pixel = 0;
      pixGetPixel(pix, x, y, &pixel);
      if ((pixel & mask) != clear) continue;
      pixSetPixel(pix, x, y, white);
      found = true;
    }
  }
  return found;
}

// Whether any pixel's entry of the palette is not fully opaque.
bool UsesClearEntries(Pix* pix, std::span<BYTE const> alpha) {
  for (int y = 0; !alpha.empty() && y < pixGetHeight(pix); ++y) {
    for (int x = 0; x < pixGetWidth(pix); ++x) {
      l_uint32 index = 0;
      pixGetPixel(pix, x, y, &index);
      if (index < alpha.size() && alpha[index] != 255) return true;
    }
  }
  return false;
}

// From rows of bytes to what the file shows. False if memory is short.
bool Finish(PngReader const& reader, Pix* pix, Changes& changes) {
  pixEndianByteSwap(pix);
  if (reader.IsPalette()) {
    PixColormap* const map = MapOf(reader);
    if (UsesClearEntries(pix, reader.PaletteAlpha())) changes.Add(Change::kTransparency);
    return map != nullptr && pixSetColormap(pix, map) == 0;
  }
  if (pixGetDepth(pix) == 1) pixInvert(pix, pix);
  bool const whitened = reader.Key() != nullptr && WhitenKey(pix, *reader.Key());
  if (whitened) changes.Add(Change::kTransparency);
  return true;
}

// Null if memory is short.
PixPtr ReadPix(PngReader& reader, Changes& changes) {
  PixPtr pix(pixCreate(reader.width(), reader.height(), reader.Depth()));
  if (pix == nullptr) return nullptr;
  reader.ReadRows(reinterpret_cast<BYTE*>(pixGetData(pix.get())),
                  size_t{4} * static_cast<size_t>(pixGetWpl(pix.get())));
  return Finish(reader, pix.get(), changes) ? std::move(pix) : nullptr;
}

// Rows that cannot be read are white. nullopt if the picture is too large.
std::optional<Samples> ReadSamples(PngReader& reader, Changes& changes) {
  constexpr size_t kMostBytes = size_t{1} << 31;
  size_t const rows = static_cast<size_t>(reader.height());
  if (reader.RowBytes() > kMostBytes / rows) return std::nullopt;
  std::vector<BYTE> pixels(reader.RowBytes() * rows, 0xFF);
  reader.ReadRows(pixels.data(), reader.RowBytes());
  DeepPixels form;
  form.samples = reader.SampleCount();
  form.colours = form.samples < 3 ? ImageColours::kGrey : ImageColours::kRgb;
  form.sample_bytes = reader.SampleBytes();
  form.alpha = form.samples % 2 == 0 ? Alpha::kStraight : Alpha::kNone;
  if (HasTransparency(form, pixels)) changes.Add(Change::kTransparency);
  return SamplesOf(form, reader.width(), reader.height(), pixels);
}

}  // namespace

std::optional<Picture> DecodePng(std::span<BYTE const> file) {
  PngReader reader(file);
  if (!reader.ReadHeader()) return std::nullopt;
  Picture picture;
  if (reader.IsDeep()) {
    picture.samples = ReadSamples(reader, picture.changes);
  } else {
    picture.pix = ReadPix(reader, picture.changes);
  }
  if (!picture.samples && picture.pix == nullptr) return std::nullopt;
  picture.damage = reader.damage();
  picture.dpi = reader.Dpi();
  return picture;
}

}  // namespace sorrelin::tool

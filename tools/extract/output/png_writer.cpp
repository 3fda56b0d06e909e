// PNG files written by libpng. It fails by a jump, so nothing inside Try has destructors.
#include "tools/extract/output/png_writer.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>

#include "tools/extract/output/format_writers.h"

namespace sorrelin::tool {
namespace {

constexpr double kInchesPerMetre = 1 / 0.0254;
// Photographs of scanners hardly get smaller beyond it, and take many times as long.
constexpr int kCompressionLevel = 2;
constexpr DWORD kMaxSide = 0x7FFFFFFF;

void Put(png_structp png, png_bytep bytes, size_t size) {
  auto& output = *static_cast<ByteOutput*>(png_get_io_ptr(png));
  if (!output.Write({bytes, size})) png_error(png, "cannot be written");
}

class PngFile {
 public:
  explicit PngFile(ByteOutput& output) {
    png_ = png_create_write_struct(
        PNG_LIBPNG_VER_STRING, nullptr, [](png_structp png, auto) { png_longjmp(png, 1); },
        [](auto, auto) {});
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (info_ != nullptr) png_set_write_fn(png_, &output, Put, [](auto) {});
  }
  ~PngFile() { png_destroy_write_struct(&png_, &info_); }
  PngFile(PngFile const&) = delete;
  PngFile& operator=(PngFile const&) = delete;

  bool WriteHead(PngHead const& head) {
    if (info_ == nullptr || head.width > kMaxSide || head.height > kMaxSide) return false;
    std::vector<png_color> palette;
    for (RGBQUAD const& entry : head.palette) {
      palette.push_back({entry.rgbRed, entry.rgbGreen, entry.rgbBlue});
    }
    palette.resize(std::min(palette.size(), size_t{1} << std::min(head.bits, 8)));
    return Try([&] { SetHead(head, palette); });
  }

  template <typename Work>
  bool Try(Work work) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    work();
    return true;
  }

  png_structp png() { return png_; }
  png_infop info() { return info_; }

 private:
  void SetHead(PngHead const& head, std::vector<png_color> const& palette) {
    png_set_user_limits(png_, kMaxSide, kMaxSide);
    png_set_IHDR(png_, info_, head.width, head.height, head.bits, head.colour_type,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!palette.empty()) {
      png_set_PLTE(png_, info_, palette.data(), static_cast<int>(palette.size()));
    }
    if (head.dpi.x > 0 && head.dpi.y > 0) {
      png_set_pHYs(png_, info_, PerMetre(head.dpi.x), PerMetre(head.dpi.y), PNG_RESOLUTION_METER);
    }
    if (!head.profile.empty()) {
      png_set_iCCP(png_, info_, "ICC profile", PNG_COMPRESSION_TYPE_BASE,
                   reinterpret_cast<png_const_bytep>(head.profile.data()),
                   static_cast<png_uint_32>(head.profile.size()));
    }
    png_set_compression_level(png_, kCompressionLevel);
    // Trying every prediction for each row takes longer than all the rest.
    bool const has_tones = head.palette.empty() && head.bits >= 8;
    png_set_filter(png_, PNG_FILTER_TYPE_BASE, has_tones ? PNG_FILTER_UP : PNG_FILTER_NONE);
    png_write_info(png_, info_);
  }

  static png_uint_32 PerMetre(int dpi) {
    return static_cast<png_uint_32>(dpi * kInchesPerMetre + 0.5);
  }

  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

class PngWriter : public PictureWriter {
 public:
  explicit PngWriter(ByteOutput& output) : file_(output) {}

  bool Begin(PictureForm const& form) override {
    height_ = form.height;
    PngHead head = {form.width, form.height, form.depth == 1 ? 1 : 8, 0, form.palette,
                    form.dpi,   form.profile};
    if (!form.palette.empty()) head.colour_type = PNG_COLOR_TYPE_PALETTE;
    if (form.depth >= 24) {
      head.colour_type = form.HasOpacity() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
    }
    if (form.depth == 16 || form.depth > 32) head.bits = 16;
    if (!file_.WriteHead(head)) return false;
    // A set bit is black here, and white there.
    bool const inverted = form.depth == 1 && form.palette.empty();
    return file_.Try([&] {
      if (inverted) png_set_invert_mono(file_.png());
    });
  }

  bool Row(std::span<BYTE const> row) override {
    ++rows_;
    is_written_ = is_written_ && file_.Try([&] { png_write_row(file_.png(), row.data()); });
    return is_written_;
  }

  bool TakesProfile() const override { return true; }

  bool Finish() override {
    return is_written_ && rows_ == height_ &&
           file_.Try([&] { png_write_end(file_.png(), nullptr); });
  }

 private:
  PngFile file_;
  DWORD height_ = 0;
  DWORD rows_ = 0;
  bool is_written_ = true;
};

}  // namespace

bool WriteDeflatedPng(PngHead const& head, std::span<BYTE const> deflated, ByteOutput& output) {
  constexpr size_t kChunkBytes = size_t{1} << 20;
  PngFile file(output);
  if (!file.WriteHead(head)) return false;
  constexpr png_byte kData[] = "IDAT";
  constexpr png_byte kEnd[] = "IEND";
  return file.Try([&] {
    for (size_t at = 0; at < deflated.size(); at += kChunkBytes) {
      size_t const size = std::min(kChunkBytes, deflated.size() - at);
      png_write_chunk(file.png(), kData, deflated.data() + at, size);
    }
    png_write_chunk(file.png(), kEnd, nullptr, 0);
  });
}

std::unique_ptr<PictureWriter> MakePngWriter(ByteOutput& output) {
  return std::make_unique<PngWriter>(output);
}

}  // namespace sorrelin::tool

// The file formats, and the reduction of pictures to what a format can hold.
#include "tools/extract/output/picture_writer.h"

#include <algorithm>
#include <string>

#include "tools/extract/output/format_writers.h"

namespace sorrelin::tool {
namespace {

struct FormatName {
  std::string_view name;
  FileFormat format;
};

constexpr FormatName kNames[] = {{"keep", FileFormat::kKeep}, {"png", FileFormat::kPng},
                                 {"tiff", FileFormat::kTiff}, {"bmp", FileFormat::kBmp},
                                 {"pnm", FileFormat::kPnm},   {"jpeg", FileFormat::kJpeg}};

constexpr FormatName kExtensions[] = {{".png", FileFormat::kPng},   {".tif", FileFormat::kTiff},
                                      {".tiff", FileFormat::kTiff}, {".bmp", FileFormat::kBmp},
                                      {".pnm", FileFormat::kPnm},   {".pbm", FileFormat::kPnm},
                                      {".pgm", FileFormat::kPnm},   {".ppm", FileFormat::kPnm},
                                      {".jpg", FileFormat::kJpeg},  {".jpeg", FileFormat::kJpeg}};

// What a format can hold.
struct Limits {
  bool bits = true;
  bool palettes = true;
  bool words = true;  // samples of 16 bits
  bool opacity = true;
};

Limits LimitsOf(FileFormat format) {
  switch (format) {
    case FileFormat::kBmp:
      return {true, true, false, false};
    case FileFormat::kPnm:
      return {true, false, true, false};
    case FileFormat::kJpeg:
      return {false, false, false, false};
    default:
      return {};
  }
}

// Changes what the format cannot hold.
class Reducer : public PictureWriter {
 public:
  Reducer(Limits limits, std::unique_ptr<PictureWriter> writer)
      : limits_(limits), writer_(std::move(writer)) {}

  bool Begin(PictureForm const& form) override {
    from_ = to_ = form;
    if (to_.HasOpacity() && !limits_.opacity) to_.depth = to_.depth == 64 ? 48 : 24;
    if (to_.depth > 8 && to_.depth % 16 == 0 && to_.depth != 32 && !limits_.words) to_.depth /= 2;
    if (!to_.palette.empty() && !limits_.palettes) {
      to_.depth = 24;
      to_.palette.clear();
    }
    if (to_.depth == 1 && !limits_.bits) to_.depth = 8;
    return writer_->Begin(to_);
  }

  bool Row(std::span<BYTE const> row) override {
    if (from_.depth == to_.depth) return writer_->Row(row);
    row_.clear();
    for (size_t x = 0; x < from_.width; ++x) AddPixel(row, x);
    return writer_->Row(row_);
  }

  bool TakesProfile() const override { return writer_->TakesProfile(); }
  bool Finish() override { return writer_->Finish(); }

 private:
  void AddPixel(std::span<BYTE const> row, size_t x) {
    if (from_.depth <= 8) {
      size_t const value =
          from_.depth == 8 ? row[x] : static_cast<size_t>(row[x / 8] >> (7 - x % 8) & 1);
      return from_.palette.empty() ? AddTone(value) : AddColour(value);
    }
    size_t const bytes = from_.depth == 32 || from_.depth == 24 ? 1 : 2;
    size_t const channels = static_cast<size_t>(from_.depth) / 8 / bytes;
    BYTE const* const pixel = &row[x * channels * bytes];
    unsigned const top = bytes == 2 ? 65535 : 255;
    unsigned const opacity = from_.HasOpacity() ? Sample(pixel, 3, bytes) : top;
    for (size_t c = 0; c < (from_.HasOpacity() ? 3 : channels); ++c) {
      uint64_t const tone = Sample(pixel, c, bytes);
      uint64_t const laid = (tone * opacity + uint64_t{top} * (top - opacity) + top / 2) / top;
      if (bytes == 2 && limits_.words) row_.push_back(static_cast<BYTE>(laid >> 8));
      row_.push_back(static_cast<BYTE>(bytes == 2 && !limits_.words ? laid >> 8 : laid));
    }
  }

  static unsigned Sample(BYTE const* pixel, size_t channel, size_t bytes) {
    if (bytes == 1) return pixel[channel];
    return static_cast<unsigned>(pixel[2 * channel]) << 8 | pixel[2 * channel + 1];
  }

  // A set bit is black.
  void AddTone(size_t value) {
    row_.push_back(from_.depth == 1 ? (value != 0 ? BYTE{0} : BYTE{255})
                                    : static_cast<BYTE>(value));
  }

  void AddColour(size_t value) {
    RGBQUAD const colour = value < from_.palette.size() ? from_.palette[value] : RGBQUAD{};
    row_.insert(row_.end(), {colour.rgbRed, colour.rgbGreen, colour.rgbBlue});
  }

  Limits limits_;
  std::unique_ptr<PictureWriter> writer_;
  PictureForm from_, to_;
  std::vector<BYTE> row_;
};

std::unique_ptr<PictureWriter> MakeOwn(FileFormat format, ByteOutput& output) {
  switch (format) {
    case FileFormat::kTiff:
      return MakeTiffWriter(output);
    case FileFormat::kBmp:
      return MakeBmpWriter(output);
    case FileFormat::kPnm:
      return MakePnmWriter(output);
    case FileFormat::kJpeg:
      return MakeJpegWriter(output);
    default:
      return MakePngWriter(output);
  }
}

}  // namespace

std::optional<FileFormat> FormatOfName(std::string_view name) {
  for (FormatName const& row : kNames) {
    if (row.name == name) return row.format;
  }
  return std::nullopt;
}

std::optional<FileFormat> FormatOfFile(std::filesystem::path const& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  for (FormatName const& row : kExtensions) {
    if (row.name == extension) return row.format;
  }
  return std::nullopt;
}

char const* ExtensionOf(FileFormat format) {
  switch (format) {
    case FileFormat::kTiff:
      return ".tif";
    case FileFormat::kBmp:
      return ".bmp";
    case FileFormat::kPnm:
      return ".pnm";
    case FileFormat::kJpeg:
      return ".jpg";
    default:
      return ".png";
  }
}

std::unique_ptr<PictureWriter> MakeWriter(FileFormat format, ByteOutput& output) {
  return std::make_unique<Reducer>(LimitsOf(format), MakeOwn(format, output));
}

}  // namespace sorrelin::tool

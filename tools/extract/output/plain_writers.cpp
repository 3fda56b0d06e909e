// Writers of BMP and PNM files.
#include <array>
#include <string>

#include "tools/extract/output/format_writers.h"

namespace sorrelin::tool {
namespace {

constexpr double kInchesPerMetre = 1 / 0.0254;

class PnmWriter : public PictureWriter {
 public:
  explicit PnmWriter(ByteOutput& output) : output_(output) {}

  bool Begin(PictureForm const& form) override {
    rows_left_ = form.height;
    char const* const kind = form.depth == 1 ? "P4" : form.depth % 24 == 0 ? "P6" : "P5";
    std::string head = std::string(kind) + "\n" + std::to_string(form.width) + " " +
                       std::to_string(form.height) + "\n";
    if (form.depth != 1) head += form.depth == 16 || form.depth == 48 ? "65535\n" : "255\n";
    return output_.Write({reinterpret_cast<BYTE const*>(head.data()), head.size()});
  }
  bool Row(std::span<BYTE const> row) override {
    --rows_left_;
    return is_written_ = is_written_ && output_.Write(row);
  }
  bool Finish() override { return is_written_ && rows_left_ == 0; }

 private:
  ByteOutput& output_;
  DWORD rows_left_ = 0;
  bool is_written_ = true;
};

// BITMAPFILEHEADER (14 bytes), BITMAPINFOHEADER (40), colours (4 each), rows from the lowest up,
// each padded to 4 bytes; numbers have their low byte first.
class BmpWriter : public PictureWriter {
 public:
  explicit BmpWriter(ByteOutput& output) : output_(output) {}

  bool Begin(PictureForm const& form) override {
    constexpr uint64_t kMaxFileBytes = 0xFFFFFFFF;
    constexpr uint64_t kHeadBytes = 54;
    row_bytes_ = form.RowBytes();
    padded_bytes_ = (row_bytes_ + 3) / 4 * 4;
    rows_left_ = form.height;
    swaps_ = form.depth == 24;
    std::vector<RGBQUAD> const colours = ColoursOf(form);
    rows_at_ = kHeadBytes + 4 * colours.size();
    uint64_t const pixels = uint64_t{padded_bytes_} * form.height;
    if (rows_at_ + pixels > kMaxFileBytes) return false;
    head_ = "BM";
    Put(rows_at_ + pixels, 4);
    Put(0, 4);
    Put(rows_at_, 4);
    Put(40, 4);
    Put(form.width, 4);
    Put(form.height, 4);
    Put(1, 2);  // planes
    Put(static_cast<uint64_t>(form.depth), 2);
    Put(0, 4);  // not compressed
    Put(pixels, 4);
    for (int const dpi : {form.dpi.x, form.dpi.y}) {
      Put(static_cast<uint64_t>(dpi * kInchesPerMetre + 0.5), 4);
    }
    Put(colours.size(), 4);
    Put(0, 4);
    for (RGBQUAD const& colour : colours) {
      head_ += {static_cast<char>(colour.rgbBlue), static_cast<char>(colour.rgbGreen),
                static_cast<char>(colour.rgbRed), '\0'};
    }
    return output_.Write({reinterpret_cast<BYTE const*>(head_.data()), head_.size()});
  }

  bool Row(std::span<BYTE const> row) override {
    if (rows_left_ == 0) return false;
    row_.assign(row.begin(), row.end());
    if (swaps_) {
      for (size_t i = 0; i + 2 < row_.size(); i += 3) std::swap(row_[i], row_[i + 2]);
    }
    row_.resize(padded_bytes_);
    uint64_t const place = rows_at_ + uint64_t{padded_bytes_} * --rows_left_;
    return is_written_ = is_written_ && output_.WriteAt(place, row_);
  }

  bool Finish() override { return is_written_ && rows_left_ == 0; }

 private:
  // A set bit is black; 8 bits without a palette are tones.
  static std::vector<RGBQUAD> ColoursOf(PictureForm const& form) {
    if (form.depth > 8) return {};
    std::vector<RGBQUAD> colours = form.palette;
    if (colours.empty() && form.depth == 1) return {{255, 255, 255, 0}, {0, 0, 0, 0}};
    for (int i = 0; colours.size() < 256 && form.palette.empty(); ++i) {
      BYTE const tone = static_cast<BYTE>(i);
      colours.push_back({tone, tone, tone, 0});
    }
    return colours;
  }

  void Put(uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) head_ += static_cast<char>(value >> 8 * i);
  }

  ByteOutput& output_;
  std::string head_;
  std::vector<BYTE> row_;
  size_t row_bytes_ = 0, padded_bytes_ = 0;
  uint64_t rows_at_ = 0;
  DWORD rows_left_ = 0;
  bool swaps_ = false;
  bool is_written_ = true;
};

}  // namespace

std::unique_ptr<PictureWriter> MakePnmWriter(ByteOutput& output) {
  return std::make_unique<PnmWriter>(output);
}

std::unique_ptr<PictureWriter> MakeBmpWriter(ByteOutput& output) {
  return std::make_unique<BmpWriter>(output);
}

}  // namespace sorrelin::tool

// Group 4 by our own coder, Flate by zlib, JPEG by libjpeg.
#include "tools/printer/row_coder.h"

#include <siblings/cadwick/group4.h>
#include <zlib.h>

#include <algorithm>
#include <array>

#include "tools/formats/jpeg/jpeg_errors.h"
#include "tools/formats/jpeg/jpeg_file.h"
#include "tools/formats/jpeg/jpeg_start.h"

namespace sorrelin::tool {
namespace {

constexpr BYTE kUpFilter = 2;  // of PNG: the difference from the row above

class VectorSink final : public cadwick::ByteSink {
 public:
  explicit VectorSink(std::vector<BYTE>& bytes) : bytes_(bytes) {}
  bool Write(std::span<BYTE const> bytes) override {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return true;
  }

 private:
  std::vector<BYTE>& bytes_;
};

class Group4Rows : public RowCoder {
 public:
  Group4Rows(RasterPage const& page, std::vector<BYTE>& bytes)
      : sink_(bytes),
        encoder_({static_cast<uint32_t>(page.width), static_cast<uint32_t>(page.height)}, sink_) {}

  // The coder takes a set bit for black.
  bool Row(std::span<BYTE const> row) override {
    auto const to = encoder_.Row();
    std::ranges::transform(row, to.begin(), [](BYTE bits) { return static_cast<BYTE>(~bits); });
    return encoder_.Encode();
  }

  bool Finish() override { return encoder_.Finish(); }

  ImageForm Form() const override {
    ImageForm form;
    form.filter = ImageFilter::kGroup4;
    form.bits_per_component = 1;
    return form;
  }

 private:
  VectorSink sink_;
  cadwick::Group4Encoder encoder_;
};

class FlateRows : public RowCoder {
 public:
  FlateRows(RasterPage const& page, std::vector<BYTE>& bytes)
      : page_(page), bytes_(bytes), above_(page.RowBytes()), predicted_(page.RowBytes() + 1) {
    begun_ = deflateInit(&stream_, Z_DEFAULT_COMPRESSION) == Z_OK;
  }
  ~FlateRows() override { deflateEnd(&stream_); }

  bool Row(std::span<BYTE const> row) override {
    predicted_[0] = kUpFilter;
    for (size_t i = 0; i < above_.size(); ++i) {
      predicted_[i + 1] = static_cast<BYTE>(row[i] - above_[i]);
    }
    std::ranges::copy(row, above_.begin());
    return Deflate(predicted_, Z_NO_FLUSH);
  }

  bool Finish() override { return Deflate({}, Z_FINISH); }

  ImageForm Form() const override {
    ImageForm form;
    form.filter = ImageFilter::kFlate;
    form.colours = page_.colours;
    form.bits_per_component = page_.bits;
    form.predicted = true;
    return form;
  }

 private:
  bool Deflate(std::span<BYTE> from, int flush) {
    if (!begun_) return false;
    stream_.next_in = from.data();
    stream_.avail_in = static_cast<uInt>(from.size());
    int result = Z_OK;
    do {
      stream_.next_out = block_.data();
      stream_.avail_out = static_cast<uInt>(block_.size());
      result = deflate(&stream_, flush);
      bytes_.insert(bytes_.end(), block_.data(), stream_.next_out);
    } while (result == Z_OK && stream_.avail_out == 0);
    return flush == Z_FINISH ? result == Z_STREAM_END : result == Z_OK || result == Z_BUF_ERROR;
  }

  RasterPage const page_;
  std::vector<BYTE>& bytes_;
  std::vector<BYTE> above_;
  std::vector<BYTE> predicted_;
  std::array<BYTE, 65536> block_;
  z_stream stream_{};
  bool begun_ = false;
};

class JpegRows : public RowCoder {
 public:
  JpegRows(RasterPage const& page, std::vector<BYTE>& bytes) : bytes_(bytes) {
    info_.err = errors_.manager();
    target_.owner = this;
    target_.manager.init_destination = [](j_compress_ptr info) { Of(info).BeginBlock(); };
    target_.manager.empty_output_buffer = [](j_compress_ptr info) -> boolean {
      Of(info).EndBlock(0);
      return TRUE;
    };
    target_.manager.term_destination = [](j_compress_ptr info) {
      JpegRows& rows = Of(info);
      rows.EndBlock(rows.target_.manager.free_in_buffer);
    };
    is_whole_ = errors_.Try([&] { Begin(page); });
  }
  ~JpegRows() override { jpeg_destroy_compress(&info_); }

  bool Row(std::span<BYTE const> row) override {
    JSAMPROW rows[] = {const_cast<BYTE*>(row.data())};
    return is_whole_ = is_whole_ && errors_.Try([&] { jpeg_write_scanlines(&info_, rows, 1); });
  }

  bool Finish() override {
    return is_whole_ && errors_.Try([&] { jpeg_finish_compress(&info_); });
  }

  ImageForm Form() const override {
    ImageForm form;
    form.filter = ImageFilter::kJpeg;
    form.colours = info_.input_components == 1 ? ImageColours::kGrey : ImageColours::kRgb;
    return form;
  }

 private:
  struct Target {
    jpeg_destination_mgr manager;  // first, as libjpeg passes it back
    JpegRows* owner;
  };

  static JpegRows& Of(j_compress_ptr info) { return *reinterpret_cast<Target*>(info->dest)->owner; }

  void Begin(RasterPage const& page) {
    jpeg_create_compress(&info_);
    info_.dest = &target_.manager;
    info_.image_width = static_cast<JDIMENSION>(page.width);
    info_.image_height = static_cast<JDIMENSION>(page.height);
    StartJpeg(info_, page.colours == ImageColours::kRgb, page.quality);
  }

  void BeginBlock() {
    target_.manager.next_output_byte = block_.data();
    target_.manager.free_in_buffer = block_.size();
  }

  void EndBlock(size_t free) {
    bytes_.insert(bytes_.end(), block_.begin(), block_.end() - static_cast<ptrdiff_t>(free));
    BeginBlock();
  }

  std::vector<BYTE>& bytes_;
  std::array<BYTE, 65536> block_;
  JpegErrors errors_;
  Target target_{};
  jpeg_compress_struct info_{};
  bool is_whole_ = false;
};

bool TakesJpeg(RasterPage const& page) {
  return page.bits == 8 && page.colours != ImageColours::kCmyk &&
         std::max(page.width, page.height) <= kMaxJpegSide;
}

}  // namespace

std::unique_ptr<RowCoder> MakeRowCoder(RasterPage const& page, std::vector<BYTE>& bytes) {
  bool const is_bilevel = page.bits == 1 && cadwick::ValidPicture(page.width, page.height);
  if (is_bilevel && page.coding != RasterCoding::kFlate) {
    return std::make_unique<Group4Rows>(page, bytes);
  }
  if (page.coding == RasterCoding::kJpeg && TakesJpeg(page)) {
    return std::make_unique<JpegRows>(page, bytes);
  }
  return std::make_unique<FlateRows>(page, bytes);
}

}  // namespace sorrelin::tool

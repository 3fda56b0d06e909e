// PNM by hand, Group 4 by libtiff and JPEG by libjpeg.
//
// PNM: "P4", "P5" or "P6", width, height and the largest sample as decimal numbers, and rows
// without padding between them; samples of 16 bits have the high byte first. The header is written
// twice, with a height of as many characters, which is known at the end alone.
#include "tools/scan/row_writer.h"

#include <tiffio.h>

#include <bit>
#include <cstdio>
#include <limits>
#include <utility>
#include <vector>

#include "tools/formats/jpeg/jpeg_errors.h"
#include "tools/formats/jpeg/jpeg_start.h"
#include "tools/formats/tiff/tiff_messages.h"

namespace sorrelin::tool {
namespace {

constexpr unsigned char kWhite = 255;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

class PnmRows : public RowWriter {
 public:
  PnmRows(File file, LineShape const& shape) : file_(std::move(file)), shape_(shape) {}

  bool WriteHeader() {
    char const kind = shape_.depth == 1 ? '4' : shape_.colour ? '6' : '5';
    char const* const most = shape_.depth == 1 ? "" : shape_.depth == 8 ? "255\n" : "65535\n";
    return std::fprintf(file_.get(), "P%c\n%lld %12lld\n%s", kind,
                        static_cast<long long>(shape_.width), static_cast<long long>(rows_),
                        most) > 0;
  }

  bool Write(std::span<unsigned char const> row) override {
    row_.assign(row.begin(), row.end());
    if (shape_.depth == 16 && std::endian::native == std::endian::little) {
      for (size_t i = 0; i + 1 < row_.size(); i += 2) std::swap(row_[i], row_[i + 1]);
    }
    ++rows_;
    return std::fwrite(row_.data(), 1, row_.size(), file_.get()) == row_.size();
  }

  bool Finish() override {
    return std::fseek(file_.get(), 0, SEEK_SET) == 0 && WriteHeader() &&
           std::fflush(file_.get()) == 0;
  }

 private:
  File file_;
  LineShape shape_;
  std::vector<unsigned char> row_;
  int64_t rows_ = 0;
};

class Group4Rows : public RowWriter {
 public:
  explicit Group4Rows(TIFF* file) : file_(file) {}

  bool SetForm(LineShape const& shape) {
    TIFF* const file = file_.get();
    return TIFFSetField(file, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(shape.width)) == 1 &&
           TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 1) == 1 &&
           TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, 1) == 1 &&
           TIFFSetField(file, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4) == 1 &&
           TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE) == 1 &&
           TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, std::numeric_limits<uint32_t>::max()) == 1;
  }

  bool Write(std::span<unsigned char const> row) override {
    row_.assign(row.begin(), row.end());
    return TIFFWriteScanline(file_.get(), row_.data(), rows_++, 0) == 1;
  }

  bool Finish() override { return TIFFWriteDirectory(file_.get()) == 1; }

 private:
  struct Closer {
    void operator()(TIFF* file) const { TIFFClose(file); }
  };

  std::unique_ptr<TIFF, Closer> file_;
  std::vector<unsigned char> row_;  // libtiff takes rows that it could change
  uint32_t rows_ = 0;
};

class JpegRows : public RowWriter {
 public:
  explicit JpegRows(File file) : file_(std::move(file)) { info_.err = errors_.manager(); }
  ~JpegRows() override { jpeg_destroy_compress(&info_); }

  bool Begin(LineShape const& shape, int quality) {
    row_bytes_ = shape.RowBytes();
    return errors_.Try([&] {
      jpeg_create_compress(&info_);
      jpeg_stdio_dest(&info_, file_.get());
      info_.image_width = static_cast<JDIMENSION>(shape.width);
      info_.image_height = static_cast<JDIMENSION>(shape.lines);
      StartJpeg(info_, shape.colour, quality);
    });
  }

  bool Write(std::span<unsigned char const> row) override {
    if (info_.next_scanline == info_.image_height) return true;
    row_.assign(row.begin(), row.end());
    return errors_.Try([&] {
      JSAMPROW rows[] = {row_.data()};
      jpeg_write_scanlines(&info_, rows, 1);
    });
  }

  bool Finish() override {
    std::vector<unsigned char> const white(row_bytes_, kWhite);
    while (info_.next_scanline < info_.image_height) {
      if (!Write(white)) return false;
    }
    return errors_.Try([&] { jpeg_finish_compress(&info_); });
  }

 private:
  File file_;
  JpegErrors errors_;
  jpeg_compress_struct info_{};
  size_t row_bytes_ = 0;
  std::vector<unsigned char> row_;
};

File Create(std::filesystem::path const& path) {
  return File(std::fopen(path.string().c_str(), "wb"));
}

}  // namespace

std::unique_ptr<RowWriter> MakePnmRows(std::filesystem::path const& path, LineShape const& shape) {
  File file = Create(path);
  if (file == nullptr) return nullptr;
  auto rows = std::make_unique<PnmRows>(std::move(file), shape);
  return rows->WriteHeader() ? std::move(rows) : nullptr;
}

std::unique_ptr<RowWriter> MakeGroup4Rows(std::filesystem::path const& path,
                                          LineShape const& shape) {
  KeepTiffQuiet();
  TIFF* const file = TIFFOpen(path.string().c_str(), "w");
  if (file == nullptr) return nullptr;
  auto rows = std::make_unique<Group4Rows>(file);
  return rows->SetForm(shape) ? std::move(rows) : nullptr;
}

std::unique_ptr<RowWriter> MakeJpegRows(std::filesystem::path const& path, LineShape const& shape,
                                        int quality) {
  File file = Create(path);
  if (file == nullptr) return nullptr;
  auto rows = std::make_unique<JpegRows>(std::move(file));
  return rows->Begin(shape, quality) ? std::move(rows) : nullptr;
}

}  // namespace sorrelin::tool

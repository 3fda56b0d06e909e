// JPEG rows through libjpeg. Its failures come back by a jump, so nothing inside Try has
// destructors.
#include "tools/extract/codings/jpeg_decoder.h"

#include <csetjmp>
#include <cstdio>
// The header uses what is above without including it.
#include <jpeglib.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "tools/formats/jpeg/jpeg_file.h"

namespace sorrelin::tool {
namespace {

constexpr char kDamaged[] = "its JPEG data are damaged, or of a kind that is not read";
// Pictures coded in passes are held whole, which takes up to so much for a byte of data.
constexpr uint64_t kMemory = 64 << 20;
constexpr uint64_t kMemoryPerByte = 256;

// 2 GiB at most where a long has 32 bits.
long MemoryFor(size_t data_bytes) {
  constexpr uint64_t kMost = std::numeric_limits<long>::max();
  return static_cast<long>(std::min(kMemory + kMemoryPerByte * data_bytes, kMost));
}

struct Errors {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};

class JpegRows {
 public:
  explicit JpegRows(std::span<BYTE const> data) {
    info_.err = jpeg_std_error(&errors_.manager);
    errors_.manager.error_exit = [](j_common_ptr info) {
      std::longjmp(reinterpret_cast<Errors*>(info->err)->jump, 1);
    };
    errors_.manager.emit_message = [](j_common_ptr info, int level) {
      if (level < 0) ++info->err->num_warnings;
    };
    errors_.manager.output_message = [](j_common_ptr) {};
    is_read_ = Try([&] {
      jpeg_create_decompress(&info_);
      info_.mem->max_memory_to_use = MemoryFor(data.size());
      jpeg_mem_src(&info_, data.data(), static_cast<unsigned long>(data.size()));
      jpeg_read_header(&info_, TRUE);
    });
  }
  ~JpegRows() { jpeg_destroy_decompress(&info_); }
  JpegRows(JpegRows const&) = delete;
  JpegRows& operator=(JpegRows const&) = delete;

  bool is_read() const { return is_read_; }
  jpeg_decompress_struct& info() { return info_; }
  bool is_damaged() const { return errors_.manager.num_warnings != 0; }

  template <typename Work>
  bool Try(Work work) {
    if (setjmp(errors_.jump) != 0) return false;
    work();
    return true;
  }

 private:
  jpeg_decompress_struct info_{};
  Errors errors_{};
  bool is_read_ = false;
};

// The filter's own word on the colours, where the file has no Adobe marker (ISO 32000-1, table 13).
void SetColours(jpeg_decompress_struct& info, int transform, size_t components) {
  bool const told = transform != -1 && info.saw_Adobe_marker == FALSE;
  if (info.num_components == 3) {
    if (told) info.jpeg_color_space = transform == 0 ? JCS_RGB : JCS_YCbCr;
    info.out_color_space = JCS_RGB;
  } else if (info.num_components == 4) {
    if (told) info.jpeg_color_space = transform == 0 ? JCS_CMYK : JCS_YCCK;
    info.out_color_space = JCS_CMYK;
  } else {
    info.out_color_space = components == 3 ? JCS_RGB : info.jpeg_color_space;
  }
}

// Kept: grey data in a space of colours are grey; scanning programs write such pages.
bool IsGreyInColours(size_t components, PictureShape const& shape) {
  return components == 1 && shape.space->family() == SpaceFamily::kRgb;
}

std::string ShapeProblem(jpeg_decompress_struct const& info, PictureShape const& shape) {
  if (info.image_width != shape.width || info.image_height != shape.height) {
    return "its JPEG data are of another size than the picture";
  }
  size_t const components = static_cast<size_t>(info.num_components);
  if (components == shape.Components() || IsGreyInColours(components, shape)) return "";
  return "its JPEG data are of " + std::to_string(components) +
         " components, and its colour space of " + std::to_string(shape.Components());
}

}  // namespace

bool DecodeJpegSamples(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
                       std::string& problem) {
  problem = kDamaged;
  JpegRows reader(data);
  if (!reader.is_read()) return false;
  problem = ShapeProblem(reader.info(), shape);
  if (!problem.empty()) return false;
  problem = kShortData;
  if (JpegEnd(data) == 0) return false;
  problem = std::string("its data cannot be decoded: they are damaged");
  jpeg_decompress_struct& info = reader.info();
  SetColours(info, shape.colour_transform, shape.Components());
  std::vector<BYTE> row(shape.RowBytes());
  if (!reader.Try([&] { jpeg_start_decompress(&info); })) return false;
  while (info.output_scanline < info.output_height) {
    JSAMPROW rows[] = {row.data()};
    if (!reader.Try([&] { jpeg_read_scanlines(&info, rows, 1); })) return false;
    if (!sink.Row(row)) return true;
  }
  return reader.Try([&] { jpeg_finish_decompress(&info); }) && !reader.is_damaged();
}

}  // namespace sorrelin::tool

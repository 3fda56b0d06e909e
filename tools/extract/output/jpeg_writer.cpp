// JPEG files written by libjpeg, whose failures come back by a jump.
#include <csetjmp>
#include <cstdio>
// The header uses what is above without including it.
#include <jpeglib.h>

#include <array>

#include "tools/extract/output/format_writers.h"
#include "tools/formats/jpeg/jpeg_file.h"

namespace sorrelin::tool {
namespace {

constexpr int kQuality = 90;
constexpr int kMaxDensity = 65535;
constexpr UINT8 kPerInch = 1;

// The coder's way out; a block of bytes at a time.
struct Target {
  jpeg_destination_mgr manager;
  ByteOutput* output;
  std::array<BYTE, 65536> block;
};

void BeginBlock(j_compress_ptr info) {
  Target& target = *reinterpret_cast<Target*>(info->dest);
  target.manager.next_output_byte = target.block.data();
  target.manager.free_in_buffer = target.block.size();
}

boolean EndBlock(j_compress_ptr info) {
  Target& target = *reinterpret_cast<Target*>(info->dest);
  if (!target.output->Write(target.block))
    info->err->error_exit(reinterpret_cast<j_common_ptr>(info));
  BeginBlock(info);
  return TRUE;
}

void EndFile(j_compress_ptr info) {
  Target& target = *reinterpret_cast<Target*>(info->dest);
  size_t const size = target.block.size() - target.manager.free_in_buffer;
  if (!target.output->Write(std::span(target.block).first(size))) {
    info->err->error_exit(reinterpret_cast<j_common_ptr>(info));
  }
}

struct Errors {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};

class JpegWriter : public PictureWriter {
 public:
  explicit JpegWriter(ByteOutput& output) {
    info_.err = jpeg_std_error(&errors_.manager);
    errors_.manager.error_exit = [](j_common_ptr info) {
      std::longjmp(reinterpret_cast<Errors*>(info->err)->jump, 1);
    };
    errors_.manager.output_message = [](j_common_ptr) {};
    target_.output = &output;
    target_.manager.init_destination = BeginBlock;
    target_.manager.empty_output_buffer = EndBlock;
    target_.manager.term_destination = EndFile;
    is_written_ = Try([&] { jpeg_create_compress(&info_); });
    info_.dest = &target_.manager;
  }
  ~JpegWriter() override { jpeg_destroy_compress(&info_); }

  bool Begin(PictureForm const& form) override {
    if (form.width > kMaxJpegSide || form.height > kMaxJpegSide) return false;
    rows_left_ = form.height;
    bool const grey = form.depth == 8;
    return is_written_ = is_written_ && Try([&] {
                           info_.image_width = form.width;
                           info_.image_height = form.height;
                           info_.input_components = grey ? 1 : 3;
                           info_.in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
                           jpeg_set_defaults(&info_);
                           jpeg_set_quality(&info_, kQuality, TRUE);
                           SetDensity(form.dpi);
                           jpeg_start_compress(&info_, TRUE);
                         });
  }

  bool Row(std::span<BYTE const> row) override {
    JSAMPROW rows[] = {const_cast<BYTE*>(row.data())};
    --rows_left_;
    return is_written_ = is_written_ && Try([&] { jpeg_write_scanlines(&info_, rows, 1); });
  }

  bool Finish() override {
    return is_written_ && rows_left_ == 0 && Try([&] { jpeg_finish_compress(&info_); });
  }

 private:
  void SetDensity(Resolution dpi) {
    if (dpi.x <= 0 || dpi.y <= 0 || dpi.x > kMaxDensity || dpi.y > kMaxDensity) return;
    info_.density_unit = kPerInch;
    info_.X_density = static_cast<UINT16>(dpi.x);
    info_.Y_density = static_cast<UINT16>(dpi.y);
  }

  template <typename Work>
  bool Try(Work work) {
    if (setjmp(errors_.jump) != 0) return false;
    work();
    return true;
  }

  jpeg_compress_struct info_{};
  Errors errors_{};
  Target target_{};
  DWORD rows_left_ = 0;
  bool is_written_ = false;
};

}  // namespace

std::unique_ptr<PictureWriter> MakeJpegWriter(ByteOutput& output) {
  return std::make_unique<JpegWriter>(output);
}

}  // namespace sorrelin::tool

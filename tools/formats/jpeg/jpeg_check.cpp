// Decodes a JPEG file to an eighth of its size, which reads all coded data and computes next to
// nothing of them.
#include "tools/formats/jpeg/jpeg_check.h"

#include <vector>

#include "tools/formats/jpeg/jpeg_errors.h"

namespace sorrelin::tool {
namespace {

// Before the decompressor computes sizes: the least work for each block, with colours as coded.
void AskForLittle(jpeg_decompress_struct& info) {
  info.scale_num = 1;
  info.scale_denom = DCTSIZE;
  info.out_color_space = info.jpeg_color_space;
  info.do_fancy_upsampling = FALSE;
  info.do_block_smoothing = FALSE;
  jpeg_calc_output_dimensions(&info);
}

}  // namespace

std::string JpegDamage(std::span<BYTE const> file) {
  JpegErrors errors;
  jpeg_decompress_struct info{};
  info.err = errors.manager();
  std::vector<BYTE> samples;
  bool const read = errors.Try([&] {
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    AskForLittle(info);
    samples.resize(size_t{info.output_width} * static_cast<size_t>(info.output_components));
    jpeg_start_decompress(&info);
    BYTE* row = samples.data();
    while (info.output_scanline < info.output_height) jpeg_read_scanlines(&info, &row, 1);
    jpeg_finish_decompress(&info);
  });
  jpeg_destroy_decompress(&info);
  return read && !errors.warned() ? "" : errors.damage();
}

}  // namespace sorrelin::tool

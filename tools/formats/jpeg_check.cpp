// Reads the coefficients of a JPEG file, which is most of decoding without its arithmetic.
#include "tools/formats/jpeg_check.h"

#include "tools/formats/jpeg_errors.h"

namespace sorrelin::tool {
std::string JpegDamage(std::span<BYTE const> file) {
  JpegErrors errors;
  jpeg_decompress_struct info{};
  info.err = errors.manager();
  bool const read = errors.Try([&] {
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    jpeg_read_coefficients(&info);
    jpeg_finish_decompress(&info);
  });
  jpeg_destroy_decompress(&info);
  return read && !errors.warned() ? "" : errors.damage();
}

}  // namespace sorrelin::tool

// JPEG data that are coded row by row, by libjpeg.
#include "tools/formats/jpeg/jpeg_start.h"

namespace sorrelin::tool {
namespace {

constexpr int kUsualQuality = 75;
constexpr int kFullChromaQuality = 90;  // and above

}  // namespace

void StartJpeg(jpeg_compress_struct& info, bool has_colours, int quality) {
  if (quality == 0) quality = kUsualQuality;
  info.input_components = has_colours ? 3 : 1;
  info.in_color_space = has_colours ? JCS_RGB : JCS_GRAYSCALE;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, quality, TRUE);
  if (has_colours && quality >= kFullChromaQuality) {
    info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor = 1;
  }
  jpeg_start_compress(&info, TRUE);
}

}  // namespace sorrelin::tool

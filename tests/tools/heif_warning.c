/* Preloaded in place of libheif's function of this name: every picture comes with a warning. */
#include <libheif/heif.h>

int heif_image_get_decoding_warnings(struct heif_image* image, int first_warning_idx,
                                     struct heif_error* out_warnings,
                                     int max_output_buffer_entries) {
  (void)image;
  (void)first_warning_idx;
  if (max_output_buffer_entries < 1) return 1;
  out_warnings[0].code = heif_error_Decoder_plugin_error;
  out_warnings[0].subcode = heif_suberror_Unspecified;
  out_warnings[0].message = "a tile is missing";
  return 1;
}

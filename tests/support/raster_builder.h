// Print rasters, written by hand: page headers by their offsets, lines plain or packed.
#ifndef TESTS_SUPPORT_RASTER_BUILDER_H_
#define TESTS_SUPPORT_RASTER_BUILDER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace test {

struct RasterHeaderForm {
  uint32_t width = 8;
  uint32_t height = 2;
  uint32_t bits_per_colour = 8;
  uint32_t bits_per_pixel = 8;
  uint32_t line_bytes = 8;
  uint32_t colour_order = 0;
  uint32_t colour_space = 18;  // sGray
  uint32_t dpi = 72;
  uint32_t compression = 0;
  uint32_t row_count = 0;
  uint32_t copies = 1;
  uint32_t page[2] = {0, 0};    // points
  uint32_t corner[2] = {0, 0};  // points, of the picture on the page
  std::string_view media_class = {};
};

inline std::string Number(uint32_t value, bool low_first = false) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) {
    bytes += static_cast<char>(value >> 8 * (low_first ? i : 3 - i) & 0xFF);
  }
  return bytes;
}

// Of 420 or 1796 bytes.
inline std::string RasterHeaderBytes(RasterHeaderForm const& form, bool low_first = false,
                                     size_t size = 1796) {
  std::string bytes(size, '\0');
  auto const put = [&](size_t at, uint32_t value) {
    bytes.replace(at, 4, Number(value, low_first));
  };
  bytes.replace(0, form.media_class.size(), form.media_class);
  put(276, form.dpi);
  put(280, form.dpi);
  put(284, form.corner[0]);
  put(288, form.corner[1]);
  put(340, form.copies);
  put(352, form.page[0]);
  put(356, form.page[1]);
  put(372, form.width);
  put(376, form.height);
  put(384, form.bits_per_colour);
  put(388, form.bits_per_pixel);
  put(392, form.line_bytes);
  put(396, form.colour_order);
  put(400, form.colour_space);
  put(404, form.compression);
  put(408, form.row_count);
  return bytes;
}

inline std::string AppleHeaderBytes(char bits_per_pixel, char colour_space, uint32_t width,
                                    uint32_t height, uint32_t dpi) {
  std::string bytes(32, '\0');
  bytes[0] = bits_per_pixel;
  bytes[1] = colour_space;
  bytes.replace(12, 12, Number(width) + Number(height) + Number(dpi));
  return bytes;
}

// A page of 8 bits of grey, all rows of one tone, packed.
inline std::string PackedGreyPage(uint32_t side, char tone, RasterHeaderForm form = {}) {
  form.width = form.height = form.line_bytes = side;
  std::string bytes = RasterHeaderBytes(form);
  for (uint32_t row = 0; row < side; ++row) {
    bytes += '\0';
    for (uint32_t left = side; left > 0;) {
      uint32_t const run = left < 128 ? left : 128;
      bytes += static_cast<char>(run - 1);
      bytes += tone;
      left -= run;
    }
  }
  return bytes;
}

}  // namespace test

#endif  // TESTS_SUPPORT_RASTER_BUILDER_H_

// Coefficients through libjpeg's transcoding calls.
#include "tests/support/coefficients.h"

#include <cstdio>

#include <jpeglib.h>

#include <algorithm>

namespace test {

std::vector<Plane> CoefficientsOf(std::vector<BYTE> const& file) {
  jpeg_decompress_struct info{};
  jpeg_error_mgr errors{};
  info.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
  jpeg_read_header(&info, TRUE);
  jvirt_barray_ptr* const arrays = jpeg_read_coefficients(&info);
  std::vector<Plane> planes(static_cast<size_t>(info.num_components));
  for (size_t c = 0; c < planes.size(); ++c) {
    jpeg_component_info const& part = info.comp_info[c];
    for (JDIMENSION y = 0; y < part.height_in_blocks; ++y) {
      JBLOCKARRAY const row = info.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&info),
                                                           arrays[c], y, 1, FALSE);
      std::vector<Block> blocks(part.width_in_blocks);
      for (size_t x = 0; x < blocks.size(); ++x) {
        std::copy(row[0][x], row[0][x] + 64, blocks[x].begin());
      }
      planes[c].push_back(std::move(blocks));
    }
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return planes;
}

}  // namespace test

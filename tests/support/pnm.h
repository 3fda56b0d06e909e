// Reads the PNM files that other programs write (P4, P5, P6 with 8 bits, or the upper 8 of 16).
#ifndef TESTS_SUPPORT_PNM_H_
#define TESTS_SUPPORT_PNM_H_

#include <sorrelin/platform/types.h>

#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace test {

struct PnmPicture {
  int width = 0;
  int height = 0;
  std::vector<DWORD> pixels;  // 0xRRGGBB, top row first; empty if the file is no PNM
};

namespace pnm_detail {

inline int NextNumber(std::vector<BYTE> const& file, size_t& at) {
  while (at < file.size() && (std::isspace(file[at]) != 0 || file[at] == '#')) {
    if (file[at++] != '#') continue;
    while (at < file.size() && file[at] != '\n') ++at;
  }
  int number = 0;
  for (; at < file.size() && std::isdigit(file[at]) != 0; ++at)
    number = number * 10 + file[at] - '0';
  return number;
}

}  // namespace pnm_detail

inline PnmPicture ReadPnm(std::filesystem::path const& path) {
  std::vector<BYTE> const file = ReadAll(path);
  PnmPicture picture;
  if (file.size() < 2 || file[0] != 'P') return picture;
  char const kind = static_cast<char>(file[1]);
  size_t at = 2;
  picture.width = pnm_detail::NextNumber(file, at);
  picture.height = pnm_detail::NextNumber(file, at);
  int const top = kind == '4' ? 1 : pnm_detail::NextNumber(file, at);
  ++at;
  size_t const bytes = top > 255 ? 2 : 1;  // of a sample
  size_t const width = static_cast<size_t>(picture.width);
  size_t const row_bytes = kind == '4'   ? (width + 7) / 8
                           : kind == '5' ? width * bytes
                                         : 3 * width * bytes;
  if (file.size() < at + row_bytes * static_cast<size_t>(picture.height)) return picture;
  for (int y = 0; y < picture.height; ++y, at += row_bytes) {
    for (size_t x = 0; x < width; ++x) {
      if (kind == '4') {
        picture.pixels.push_back((file[at + x / 8] >> (7 - x % 8) & 1) != 0 ? 0x000000 : 0xFFFFFF);
      } else if (kind == '5') {
        picture.pixels.push_back(file[at + x * bytes] * 0x010101u);
      } else {
        BYTE const* const p = &file[at + 3 * x * bytes];
        picture.pixels.push_back(DWORD{p[0]} << 16 | DWORD{p[bytes]} << 8 | p[2 * bytes]);
      }
    }
  }
  return picture;
}

}  // namespace test

#endif  // TESTS_SUPPORT_PNM_H_

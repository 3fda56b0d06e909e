// Group 4 as libtiff codes it, in memory: the witness that tests, benchmarks and fuzz targets hold
// the coder against.
#ifndef TESTS_SUPPORT_TIFF_WITNESS_H_
#define TESTS_SUPPORT_TIFF_WITNESS_H_

#include <tests/support/bilevel.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace test {

// The bare Group 4 data of a bitmap.
std::vector<uint8_t> TiffEncode(Bilevel const& bitmap);

// A TIFF file in memory with one strip of Group 4 data, as libtiff opens it.
std::vector<uint8_t> TiffFile(std::span<uint8_t const> coded, int32_t width, int32_t height);

struct TiffDecoded {
  Bilevel bitmap;
  // Rows read before libtiff had the first warning or error; the height if none.
  int32_t clean_rows;
  // That warning's or error's text up to " at ", without the place; empty if none.
  std::string complaint;
};

TiffDecoded TiffDecode(std::span<uint8_t const> coded, int32_t width, int32_t height);

// Decodes all rows of a file that TiffFile made, into rows of (width + 7) / 8 bytes.
void TiffReadRows(std::span<uint8_t const> file, std::span<uint8_t> rows);

}  // namespace test

#endif  // TESTS_SUPPORT_TIFF_WITNESS_H_

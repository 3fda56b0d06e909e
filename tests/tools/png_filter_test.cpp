// PNG prediction, undone by libpng.
#include "tools/make/coding/png_filter.h"

#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cstring>
#include <random>

#include "tests/support/pdf_builder.h"

namespace sorrelin::tool {
namespace {

void PutLong(std::vector<BYTE>& file, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) file.push_back(static_cast<BYTE>(value >> shift));
}

void PutChunk(std::vector<BYTE>& file, char const* type, std::vector<BYTE> const& data) {
  PutLong(file, static_cast<uint32_t>(data.size()));
  size_t const start = file.size();
  file.insert(file.end(), type, type + 4);
  file.insert(file.end(), data.begin(), data.end());
  PutLong(file, static_cast<uint32_t>(
                    crc32(0, file.data() + start, static_cast<uInt>(file.size() - start))));
}

// libpng's view of predicted rows.
std::vector<BYTE> Unpredicted(std::vector<BYTE> const& rows, int width, int height, int bits,
                              int type) {
  std::vector<BYTE> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  std::vector<BYTE> header;
  PutLong(header, static_cast<uint32_t>(width));
  PutLong(header, static_cast<uint32_t>(height));
  for (int const byte : {bits, type, 0, 0, 0}) header.push_back(static_cast<BYTE>(byte));
  PutChunk(file, "IHDR", header);
  PutChunk(file, "IDAT", test::ToBytes(test::Deflate(test::ToText(rows))));
  PutChunk(file, "IEND", {});
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_memory(&image, file.data(), file.size()), 0);
  image.format = type == PNG_COLOR_TYPE_RGB ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  std::vector<BYTE> pixels(PNG_IMAGE_SIZE(image));
  EXPECT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0) << image.message;
  return pixels;
}

// Rows that make each of the filter types the best of some row.
std::vector<BYTE> Pixels(size_t count) {
  std::mt19937 random(1);
  std::vector<BYTE> pixels(count);
  for (size_t i = 0; i < count; ++i) {
    size_t const y = i / 300;
    pixels[i] = static_cast<BYTE>(y % 5 == 0   ? i
                                  : y % 5 == 1 ? i * i / 90
                                  : y % 5 == 2 ? random()
                                               : y * 9 + i % 7);
  }
  return pixels;
}

TEST(PngFilter, EachPredictionOfColoursIsUndoneByLibpng) {
  std::vector<BYTE> const pixels = Pixels(300 * 40);
  for (Prediction const prediction : {Prediction::kUp, Prediction::kAdaptive}) {
    auto const rows = PredictedRows(pixels, 300, 3, prediction);
    EXPECT_EQ(rows.size(), 301u * 40);
    EXPECT_EQ(Unpredicted(rows, 100, 40, 8, PNG_COLOR_TYPE_RGB), pixels);
  }
}

TEST(PngFilter, EachPredictionOfGreysIsUndoneByLibpng) {
  std::vector<BYTE> const pixels = Pixels(300 * 40);
  for (Prediction const prediction : {Prediction::kUp, Prediction::kAdaptive}) {
    auto const rows = PredictedRows(pixels, 300, 1, prediction);
    EXPECT_EQ(Unpredicted(rows, 300, 40, 8, PNG_COLOR_TYPE_GRAY), pixels);
  }
}

TEST(PngFilter, WithoutPredictionRowsStayAsTheyAre) {
  std::vector<BYTE> const pixels = Pixels(600);
  EXPECT_EQ(PredictedRows(pixels, 300, 3, Prediction::kNone), pixels);
}

// A row that repeats the one above has differences of 0, and one that rises evenly has equal ones.
TEST(PngFilter, AdaptiveTakesTheTypeWithTheSmallestDifferences) {
  std::vector<BYTE> pixels;
  for (int i = 0; i < 8; ++i) pixels.push_back(static_cast<BYTE>(10 + 2 * i));
  pixels.insert(pixels.end(), pixels.begin(), pixels.begin() + 8);
  auto const rows = PredictedRows(pixels, 8, 1, Prediction::kAdaptive);
  EXPECT_EQ(rows[0], 1);
  EXPECT_EQ(std::vector<BYTE>(rows.begin() + 1, rows.begin() + 9),
            (std::vector<BYTE>{10, 2, 2, 2, 2, 2, 2, 2}));
  EXPECT_EQ(rows[9], 2);
  EXPECT_EQ(std::vector<BYTE>(rows.begin() + 10, rows.end()), std::vector<BYTE>(8));
}

}  // namespace
}  // namespace sorrelin::tool

// Flate coding of samples, checked by zlib.
#include "tools/make/coding/flate_coder.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "tests/support/pdf_builder.h"
#include "tools/make/coding/png_filter.h"

namespace sorrelin::tool {
namespace {

Samples Grey(int width, int height, unsigned (*tone)(int x, int y)) {
  Samples samples;
  samples.width = width;
  samples.height = height;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) samples.bytes.push_back(static_cast<BYTE>(tone(x, y)));
  }
  return samples;
}

std::vector<BYTE> Inflated(std::vector<BYTE> const& stream, size_t size) {
  std::vector<BYTE> bytes(size + 1);
  uLongf count = static_cast<uLongf>(bytes.size());
  EXPECT_EQ(uncompress(bytes.data(), &count, stream.data(), static_cast<uLong>(stream.size())),
            Z_OK);
  bytes.resize(count);
  return bytes;
}

unsigned Slope(int x, int y) { return static_cast<unsigned>(x * 3 + y * 2 + (x * y) % 3); }
unsigned Noise(int, int) {
  static std::mt19937 random(7);
  return static_cast<unsigned>(random());
}
unsigned Blocks(int x, int y) { return x / 32 % 2 == y / 32 % 2 ? 40 : 200; }

// Both sizes: those that are tried in whole, and those that are judged by bands.
TEST(FlateCoder, SlopesArePredictedAndSmallerThanZlibMakesThem) {
  for (int const height : {200, 2000}) {
    Samples const slope = Grey(600, height, Slope);
    FlateData const data = FlateCoder().Code(slope);
    EXPECT_TRUE(data.predicted);
    EXPECT_LT(data.stream.size(), test::Deflate(test::ToText(slope.bytes)).size());
    EXPECT_EQ(Inflated(data.stream, 601u * static_cast<size_t>(height)).size(),
              601u * static_cast<size_t>(height));
  }
}

TEST(FlateCoder, NoiseIsNotPredicted) {
  for (int const height : {200, 2000}) {
    Samples const noise = Grey(600, height, Noise);
    FlateData const data = FlateCoder().Code(noise);
    EXPECT_FALSE(data.predicted);
    EXPECT_EQ(Inflated(data.stream, noise.bytes.size()), noise.bytes);
  }
}

TEST(FlateCoder, SmallPicturesGetTheSmallestOfAllWays) {
  Samples const blocks = Grey(128, 128, Blocks);
  FlateCoder coder;
  FlateData const data = coder.Code(blocks);
  for (Prediction const way : {Prediction::kNone, Prediction::kUp, Prediction::kAdaptive}) {
    EXPECT_LE(data.stream.size(), coder.Compress(PredictedRows(blocks.bytes, 128, 1, way)).size());
  }
}

TEST(FlateCoder, SameSamplesGiveTheSameBytesFromEveryCoder) {
  Samples const slope = Grey(600, 2000, Slope);
  FlateCoder used;
  used.Code(Grey(50, 50, Noise));
  EXPECT_EQ(used.Code(slope).stream, FlateCoder().Code(slope).stream);
}

TEST(FlateCoder, EstimateIsNearTheSizeOfEvenPictures) {
  for (auto const tone : {Slope, Noise}) {
    Samples const samples = Grey(600, 3000, tone);
    FlateCoder coder;
    double const size = static_cast<double>(coder.Compress(samples.bytes).size());
    double const estimate = static_cast<double>(coder.EstimatedBytes(samples));
    EXPECT_GT(estimate, 0.5 * size);
    EXPECT_LT(estimate, 2.5 * size);
  }
}

}  // namespace
}  // namespace sorrelin::tool

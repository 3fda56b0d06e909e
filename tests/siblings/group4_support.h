// Bitmaps for the tests of the Group 4 coder, and the coder called on whole bitmaps.
#ifndef TESTS_SIBLINGS_GROUP4_SUPPORT_H_
#define TESTS_SIBLINGS_GROUP4_SUPPORT_H_

#include <siblings/cadwick/group4.h>
#include <tests/support/bilevel.h>
#include <tests/support/tiff_witness.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace test {

namespace cadwick = sorrelin::cadwick;
using cadwick::Outcome;
using Data = std::vector<uint8_t>;

// Each pixel is black with this probability, independently.
inline Bilevel Noise(int32_t width, int32_t height, unsigned percent, unsigned seed) {
  std::mt19937 random(seed);
  Bilevel bitmap(width, height);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      if (random() % 100 < percent) bitmap.SetBlack(x, y);
    }
  }
  return bitmap;
}

// Rows that differ from the one above in a few moved edges, as the strokes of letters do.
inline Bilevel Strokes(int32_t width, int32_t height, unsigned seed) {
  std::mt19937 random(seed);
  Bilevel bitmap(width, height);
  std::vector<int32_t> edges;
  for (int32_t y = 0; y < height; ++y) {
    if (random() % 8 == 0) edges.push_back(static_cast<int32_t>(random() % 4096) % width);
    if (random() % 16 == 0 && !edges.empty()) edges.erase(edges.begin());
    for (int32_t& edge : edges) {
      edge = std::clamp(edge + static_cast<int32_t>(random() % 9) - 4, 0, width);
    }
    std::sort(edges.begin(), edges.end());
    for (size_t i = 0; i + 1 < edges.size(); i += 2) bitmap.Blacken(edges[i], edges[i + 1], y);
  }
  return bitmap;
}

inline Bilevel Checkerboard(int32_t width, int32_t height, int32_t phase) {
  Bilevel bitmap(width, height);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = (y + phase) % 2; x < width; x += 2) bitmap.SetBlack(x, y);
  }
  return bitmap;
}

inline Bilevel Inverse(Bilevel bitmap) {
  for (int32_t y = 0; y < bitmap.Height(); ++y) {
    for (int32_t x = 0; x < bitmap.Width(); ++x) bitmap.Flip(x, y);
  }
  return bitmap;
}

class DataSink final : public cadwick::ByteSink {
 public:
  bool Write(std::span<BYTE const> bytes) override {
    data.insert(data.end(), bytes.begin(), bytes.end());
    return true;
  }
  Data data;
};

// The bits after the width are set in every row, since they must not matter.
inline int GiveRow(BYTE* row, int32_t y, void* user) {
  auto const& bitmap = *static_cast<Bilevel const*>(user);
  std::copy_n(bitmap.Row(y).data(), bitmap.Stride(), row);
  for (size_t x = static_cast<size_t>(bitmap.Width()); x < bitmap.Stride() * 8; ++x) {
    row[x / 8] |= static_cast<BYTE>(0x80 >> x % 8);
  }
  return CCITT_ROW_DONE;
}

inline cadwick::Picture SizeOf(Bilevel const& bitmap) {
  return {static_cast<uint32_t>(bitmap.Width()), static_cast<uint32_t>(bitmap.Height())};
}

inline Data Encode(Bilevel bitmap) {
  DataSink sink;
  Outcome const outcome = cadwick::EncodeGroup4(SizeOf(bitmap), {GiveRow, &bitmap}, sink);
  return outcome == Outcome::kDone ? sink.data : Data{};
}

struct Decoded {
  Outcome outcome;
  int32_t rows;
  Bilevel bitmap;
};

inline int TakeRow(BYTE* row, int32_t y, void* user) {
  auto& bitmap = *static_cast<Bilevel*>(user);
  std::copy_n(row, bitmap.Payload(), bitmap.Row(y).data());
  return CCITT_ROW_DONE;
}

// The check of the data must come to the same result.
inline Decoded Decode(std::span<uint8_t const> data, int32_t width, int32_t height) {
  Decoded decoded{{}, 0, Bilevel(width, height)};
  auto const result =
      cadwick::DecodeGroup4(data, SizeOf(decoded.bitmap), {TakeRow, &decoded.bitmap});
  decoded.outcome = result.outcome;
  decoded.rows = static_cast<int32_t>(result.rows);
  auto const check = cadwick::CheckGroup4(data, SizeOf(decoded.bitmap));
  if (check.outcome != result.outcome || check.rows != result.rows) {
    throw std::logic_error("the check of Group 4 data and their decoder differ");
  }
  return decoded;
}

inline bool SameRows(Bilevel const& one, Bilevel const& other, int32_t count) {
  for (int32_t y = 0; y < count; ++y) {
    if (!std::ranges::equal(one.Row(y).first(one.Payload()), other.Row(y).first(one.Payload()))) {
      return false;
    }
  }
  return true;
}

// Bits written as 0 and 1, blanks ignored, filled up with 0.
inline Data Bits(std::string_view text) {
  Data data;
  size_t count = 0;
  for (char const c : text) {
    if (c == ' ') continue;
    if (count % 8 == 0) data.push_back(0);
    if (c == '1') data.back() |= static_cast<uint8_t>(0x80 >> count % 8);
    ++count;
  }
  return data;
}

}  // namespace test

#endif  // TESTS_SIBLINGS_GROUP4_SUPPORT_H_

// The Group 4 coder against libtiff: any bitmap must get libtiff's bytes and come back from them,
// and any data must decode to libtiff's rows as far as libtiff has nothing to complain of.
//
// The input is a width (2 bytes), a height (1 byte) and data, which are taken once as the bytes of
// the bitmap, over and over again, and once as coded data.
#include <siblings/cadwick/group4.h>
#include <tests/siblings/group4_support.h>

#include <cstdio>
#include <cstdlib>

using namespace test;

namespace {

void Require(bool holds, char const* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

Bilevel BitmapOf(std::span<uint8_t const> data, int32_t width, int32_t height) {
  Bilevel bitmap(width, height);
  size_t at = 0;
  for (int32_t y = 0; y < height && !data.empty(); ++y) {
    std::span<uint8_t> const row = bitmap.Row(y).first(bitmap.Payload());
    for (uint8_t& byte : row) byte = data[at++ % data.size()];
    if (width % 8 != 0) row.back() &= static_cast<uint8_t>(0xFF00 >> width % 8);
  }
  return bitmap;
}

void CheckBitmap(Bilevel const& bitmap) {
  Data const coded = Encode(bitmap);
  Require(coded == TiffEncode(bitmap), "encoder: other bytes than libtiff's");
  Decoded const decoded = Decode(coded, bitmap.Width(), bitmap.Height());
  Require(decoded.outcome == Outcome::kDone, "decoder: refuses the encoder's data");
  Require(decoded.bitmap == bitmap, "decoder: another bitmap than was coded");
}

// libtiff reads zeros after the data; this decoder stops there, and so gets them added. Only where
// a pass leads to the end of a row, or empty runs are as many as libtiff can hold, is libtiff
// allowed to be the one that complains; no coder makes such data.
void CheckData(std::span<uint8_t const> data, int32_t width, int32_t height) {
  TiffDecoded const theirs = TiffDecode(data, width, height);
  Decoded const cut = Decode(data, width, height);
  Data longer(data.begin(), data.end());
  longer.insert(longer.end(), 8, 0);
  Decoded const ours = Decode(longer, width, height);
  Require(ours.rows >= theirs.clean_rows, "decoder: refuses a row that libtiff takes");
  Require(SameRows(ours.bitmap, theirs.bitmap, theirs.clean_rows), "decoder: other rows");
  Require(ours.rows == theirs.clean_rows || theirs.complaint == "Line length mismatch" ||
              theirs.complaint == "Buffer overflow",
          "decoder: takes a row that libtiff refuses");
  Require(cut.rows <= ours.rows && SameRows(ours.bitmap, cut.bitmap, cut.rows),
          "decoder: zeros behind the data change rows");
  Require((cut.outcome == Outcome::kDone) == (cut.rows == height), "decoder: rows and outcome");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  if (size < 3) return 0;
  int32_t const number = bytes[0] | bytes[1] << 8;
  int32_t const width = 1 + number % (number < 0xF000 ? 400 : 10000);
  int32_t const height = 1 + bytes[2] % 24;
  std::span<uint8_t const> const data(bytes + 3, size - 3);
  CheckBitmap(BitmapOf(data, width, height));
  CheckData(data, width, height);
  return 0;
}

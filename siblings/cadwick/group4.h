// Group 4 coding (ITU-T T.6) of rows.
//
// A row is (width + 7) / 8 bytes, the leftmost pixel in the highest bit; a set bit is black. Rows
// are numbered from 0, the top one. Beside the coded data and what the callbacks hold, coding in
// either direction takes less than 64 KiB and eight rows of memory.
#ifndef SIBLINGS_CADWICK_GROUP4_H_
#define SIBLINGS_CADWICK_GROUP4_H_

#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/types.h>

#include <cstdint>
#include <memory>
#include <span>

namespace sorrelin::cadwick {

enum class Outcome {
  kDone,
  kDataEnded,  // the data, or an end mark in them, came before the last row
  kDamaged,    // a code that T.6 does not have, or runs that do not fill a row exactly
  kStopped,    // the row callback's result was not 0
  kSinkFailed,
};

// Size in pixels; both are at least 1, and ValidPicture holds.
struct Picture {
  uint32_t width;
  uint32_t height;
};

bool ValidPicture(int64_t width, int64_t height);

// No data that fill the rows of a picture are longer: a row has at most one run per pixel, rounded
// up to 32, and one empty run for each; a pair of runs takes at most 21 bits when one is empty.
uint64_t MaxCodedBytes(Picture picture);

struct RowCallback {
  CcittRowCallback function;
  void* user;

  bool operator()(std::span<uint8_t> row, uint32_t y) const {
    return function(row.data(), static_cast<int32_t>(y), user) == CCITT_ROW_DONE;
  }
};

// Takes coded bytes in order; false ends the coding.
class ByteSink {
 public:
  virtual bool Write(std::span<BYTE const> bytes) = 0;

 protected:
  ~ByteSink() = default;
};

// Codes rows as they come.
class Group4Encoder {
 public:
  Group4Encoder(Picture picture, ByteSink& sink);
  ~Group4Encoder();
  Group4Encoder(Group4Encoder const&) = delete;
  Group4Encoder& operator=(Group4Encoder const&) = delete;

  // The next row, to be filled in before Encode: whole units of 8 bytes, with what an earlier row
  // has left. Bits after the width do not matter.
  std::span<uint8_t> Row();
  // Codes that row. False once the sink has refused.
  bool Encode();
  // Ends the data with EOFB. False if the sink has refused.
  bool Finish();

 private:
  friend Outcome EncodeGroup4(Picture picture, RowCallback rows, ByteSink& sink);
  void Flush();

  struct State;
  std::unique_ptr<State> state_;
};

// Codes the rows that `rows` fills in and ends them with EOFB. `rows` may write whole units of 8
// bytes; bits past the width do not matter.
Outcome EncodeGroup4(Picture picture, RowCallback rows, ByteSink& sink);

struct DecodeResult {
  Outcome outcome;
  uint32_t rows;  // that `rows` was given and took
};

// Decodes row by row until the picture is full, the data end, the data are damaged or `rows` stops.
// Only a row whose codes are all in the data is passed to `rows`; bits past its width are 0. What
// follows the last row is ignored. Work is bounded by the rows that are in the data.
DecodeResult DecodeGroup4(std::span<uint8_t const> data, Picture picture, RowCallback rows);

// The result that DecodeGroup4 would have with a callback that takes every row. Faster, since no
// pixels are made.
DecodeResult CheckGroup4(std::span<uint8_t const> data, Picture picture);

}  // namespace sorrelin::cadwick

#endif  // SIBLINGS_CADWICK_GROUP4_H_

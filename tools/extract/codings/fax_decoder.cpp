// Decoders of fax data. Plain Group 4 data go to the fast decoder of the Group 4 library; Group 3
// data, and data whose rows start on whole bytes, are decoded here with its code tables.
#include "tools/extract/codings/fax_decoder.h"

#include <siblings/cadwick/group4.h>
#include <siblings/cadwick/group4_tables.h>

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

namespace sorrelin::tool {
namespace {

using cadwick::Mode;
using cadwick::ModeEntry;
using cadwick::RunEntry;

constexpr uint32_t kEolBits = 12;  // eleven zeros and a one

// Reads bits, the highest of each byte first; zeros follow the data.
class FaxBits {
 public:
  explicit FaxBits(std::span<BYTE const> data) : data_(data), size_(uint64_t{data.size()} * 8) {}

  uint32_t Peek(uint32_t count) const {
    uint64_t window = 0;
    for (uint64_t byte = at_ / 8; byte < at_ / 8 + 5; ++byte) {
      window = window << 8 | (byte < data_.size() ? data_[static_cast<size_t>(byte)] : 0u);
    }
    return static_cast<uint32_t>(window >> (40 - at_ % 8 - count)) & ((1u << count) - 1);
  }
  void Skip(uint32_t count) { at_ += count; }
  void Align() { at_ = (at_ + 7) / 8 * 8; }
  bool IsPastEnd() const { return at_ > size_; }
  bool IsAtEnd() const { return at_ >= size_; }

 private:
  std::span<BYTE const> data_;
  uint64_t size_;
  uint64_t at_ = 0;
};

// A row as the columns at which its colour changes, white first.
using Changes = std::vector<uint32_t>;

class FaxRows {
 public:
  FaxRows(FaxParms const& parms, std::span<BYTE const> data)
      : parms_(parms), bits_(data), width_(parms.columns) {}

  enum class Result { kRow, kEnd, kDamaged };

  // Reads the next row.
  Result Next(Changes& row) {
    if (parms_.byte_aligned) bits_.Align();
    int marks = SkipMarks();
    if (marks > 1 || bits_.IsAtEnd()) return Result::kEnd;
    bool const two_dimensional = parms_.k < 0 || (parms_.k > 0 && !TakeTag(marks));
    row.clear();
    bool const read = two_dimensional ? ReadTwoDimensional(row) : ReadOneDimensional(row);
    if (bits_.IsPastEnd()) return Result::kEnd;
    above_ = row;
    return read ? Result::kRow : Result::kDamaged;
  }

 private:
  // Passes marks of a row's end with the fill bits before them; those of two dimensions have a tag
  // bit each, which is left after the last. Returns how many there were.
  int SkipMarks() {
    int marks = 0;
    for (;;) {
      FaxBits ahead = bits_;
      while (!ahead.IsAtEnd() && ahead.Peek(kEolBits) == 0) ahead.Skip(1);
      if (ahead.Peek(kEolBits) != 1) return marks;
      ahead.Skip(kEolBits);
      if (++marks > 1 && ahead.IsPastEnd()) return marks;
      FaxBits next = ahead;
      if (parms_.k > 0) next.Skip(1);
      bits_ = next.Peek(kEolBits) == 1 ? next : ahead;
      if (next.Peek(kEolBits) != 1) return marks;
    }
  }

  // Whether a row of one dimension follows. Data without marks have no tags.
  bool TakeTag(int marks) {
    if (marks == 0) return true;
    bool const one_dimensional = bits_.Peek(1) == 1;
    bits_.Skip(1);
    return one_dimensional;
  }

  std::optional<uint32_t> ReadRun(std::span<RunEntry const> table, uint32_t code_bits) {
    for (uint32_t run = 0;;) {
      RunEntry const entry = table[bits_.Peek(code_bits)];
      if (entry.Length() == 0) return std::nullopt;
      bits_.Skip(entry.Length());
      run += entry.Pixels();
      if (run > width_) return std::nullopt;
      if (entry.Pixels() < cadwick::kMakeUpUnit) return run;
    }
  }

  std::optional<uint32_t> ReadRun(bool black) {
    return black ? ReadRun(cadwick::kBlackRunTable, cadwick::kBlackRunBits)
                 : ReadRun(cadwick::kWhiteRunTable, cadwick::kWhiteRunBits);
  }

  bool ReadOneDimensional(Changes& row) {
    uint32_t column = 0;
    for (bool black = false; column < width_; black = !black) {
      auto const run = ReadRun(black);
      if (!run || *run > width_ - column) return false;
      column += *run;
      row.push_back(column);
    }
    return true;
  }

  // The first change above that is right of a0 and turns to the colour that a0 has not; `place`
  // is where the last search ended.
  size_t FindB1(size_t place, int64_t a0, bool black) const {
    while (place > 0 && above_[place - 1] > a0) --place;
    while (place < above_.size() && (above_[place] <= a0 || (place % 2 == 1) != black)) ++place;
    return place;
  }

  uint32_t Above(size_t place) const { return place < above_.size() ? above_[place] : width_; }

  bool ReadTwoDimensional(Changes& row) {
    int64_t a0 = -1;
    bool black = false;
    size_t b1 = 0;
    while (a0 < static_cast<int64_t>(width_)) {
      ModeEntry const& code = cadwick::kModeTable[bits_.Peek(cadwick::kModeBits)];
      if (code.mode == Mode::kInvalid) return false;
      bits_.Skip(code.length);
      b1 = FindB1(std::min(b1, above_.size()), a0, black);
      if (code.mode == Mode::kPass) {
        a0 = Above(b1 + 1);
      } else if (code.mode == Mode::kVertical) {
        int64_t const column = int64_t{Above(b1)} + code.distance;
        if (column < std::max<int64_t>(a0, 0) || column > width_) return false;
        row.push_back(static_cast<uint32_t>(column));
        a0 = column;
        black = !black;
      } else if (!ReadPair(row, a0, black)) {
        return false;
      }
    }
    return true;
  }

  bool ReadPair(Changes& row, int64_t& a0, bool black) {
    uint32_t const from = static_cast<uint32_t>(std::max<int64_t>(a0, 0));
    auto const first = ReadRun(black);
    auto const second = first ? ReadRun(!black) : std::nullopt;
    if (!second || *first > width_ - from || *second > width_ - from - *first) return false;
    row.push_back(from + *first);
    row.push_back(from + *first + *second);
    a0 = from + *first + *second;
    return true;
  }

  FaxParms const& parms_;
  FaxBits bits_;
  uint32_t width_;
  Changes above_;
};

void PaintBlack(std::span<BYTE> row, uint32_t begin, uint32_t end) {
  for (; begin < end && begin % 8 != 0; ++begin) row[begin / 8] |= BYTE(0x80 >> begin % 8);
  for (; begin + 8 <= end; begin += 8) row[begin / 8] = 0xFF;
  for (; begin < end; ++begin) row[begin / 8] |= BYTE(0x80 >> begin % 8);
}

bool DecodeRows(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
                std::string& problem) {
  FaxRows rows(shape.fax, data);
  Changes changes;
  std::vector<BYTE> row(shape.RowBytes());
  for (DWORD y = 0; y < shape.height; ++y) {
    FaxRows::Result const result = rows.Next(changes);
    if (result != FaxRows::Result::kRow) {
      problem = result == FaxRows::Result::kEnd ? kShortData : kDamagedData;
      return false;
    }
    std::fill(row.begin(), row.end(), BYTE{0});
    changes.push_back(shape.width);
    for (size_t i = 1; i < changes.size(); i += 2) PaintBlack(row, changes[i - 1], changes[i]);
    if (!sink.Row(row)) return true;
  }
  return true;
}

struct Group4Target {
  SampleSink& sink;
  size_t row_bytes;
};

int TakeRow(BYTE* row, int32_t, void* user) {
  Group4Target const& target = *static_cast<Group4Target*>(user);
  return target.sink.Row({row, target.row_bytes}) ? CCITT_ROW_DONE : CCITT_ROW_STOP;
}

bool IsWhole(cadwick::DecodeResult const& result, std::string& problem) {
  bool const whole =
      result.outcome == cadwick::Outcome::kDone || result.outcome == cadwick::Outcome::kStopped;
  if (!whole) {
    problem = result.outcome == cadwick::Outcome::kDataEnded ? kShortData : kDamagedData;
  }
  return whole;
}

bool DecodePlainGroup4(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
                       std::string& problem) {
  cadwick::Picture const picture = {shape.width, shape.height};
  Group4Target target = {sink, shape.RowBytes()};
  return IsWhole(cadwick::DecodeGroup4(data, picture, {TakeRow, &target}), problem);
}

// Turns rows over whose set bits are to be clear.
class Inverter : public SampleSink {
 public:
  explicit Inverter(SampleSink& sink) : sink_(sink) {}
  bool Row(std::span<BYTE const> row) override {
    row_.resize(row.size());
    std::transform(row.begin(), row.end(), row_.begin(),
                   [](BYTE byte) { return static_cast<BYTE>(~byte); });
    return sink_.Row(row_);
  }

 private:
  SampleSink& sink_;
  std::vector<BYTE> row_;
};

// A coded row takes a bit at least.
bool CanHoldRows(PictureShape const& shape, std::span<BYTE const> data, std::string& problem) {
  bool const can = shape.height / 8 <= data.size();
  if (!can) problem = kShortData;
  return can;
}

bool IsPlainGroup4(PictureShape const& shape) {
  return shape.fax.k < 0 && !shape.fax.byte_aligned &&
         cadwick::ValidPicture(shape.width, shape.height);
}

}  // namespace

bool DecodeFax(PictureShape const& shape, std::span<BYTE const> data, SampleSink& sink,
               std::string& problem) {
  if (!CanHoldRows(shape, data, problem)) return false;
  Inverter inverter(sink);
  SampleSink& target = shape.fax.black_is_1 ? sink : static_cast<SampleSink&>(inverter);
  return IsPlainGroup4(shape) ? DecodePlainGroup4(shape, data, target, problem)
                              : DecodeRows(shape, data, target, problem);
}

bool CheckFax(PictureShape const& shape, std::span<BYTE const> data, std::string& problem) {
  if (!CanHoldRows(shape, data, problem)) return false;
  if (IsPlainGroup4(shape)) {
    return IsWhole(cadwick::CheckGroup4(data, {shape.width, shape.height}), problem);
  }
  NoRows sink;
  return DecodeRows(shape, data, sink, problem);
}

}  // namespace sorrelin::tool

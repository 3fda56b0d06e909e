// Decodes Group 4 data into rows of one-bit pixels.
#include <siblings/cadwick/changing_elements.h>
#include <siblings/cadwick/group4.h>
#include <siblings/cadwick/group4_tables.h>
#include <siblings/cadwick/pixel_words.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <utility>

namespace sorrelin::cadwick {
namespace {

// Reads bits, the highest of each byte first. After the end of the data zeros follow without end,
// which Left() distinguishes from data. Small enough to be passed by value, so that its members
// stay in registers while a row is decoded.
class BitReader {
 public:
  explicit BitReader(std::span<uint8_t const> coded)
      : next_(coded.data()), end_(coded.data() + coded.size()) {}

  // Makes at least this many bits ready.
  static constexpr uint32_t kReady = 32;
  void Prepare() {
    if (ready_ >= kReady) return;
    if (end_ - next_ < static_cast<ptrdiff_t>(kWordBytes)) [[unlikely]] {
      *this = PreparedNearEnd(*this);
      return;
    }
    // Bits of a byte that does not fit whole are loaded now and once more, the same, next time.
    bits_ |= BigEndian(LoadWord(next_)) >> ready_;
    next_ += (63 - ready_) / 8;
    ready_ |= 56;
  }

  // The next `count` bits, which are ready.
  uint32_t Peek(uint32_t count) const { return static_cast<uint32_t>(bits_ >> (64 - count)); }

  void Skip(uint32_t count) {
    bits_ <<= count;
    ready_ -= count;
  }

  // Bits of the data that are ready; negative if bits past its end were skipped.
  int32_t Left() const { return static_cast<int32_t>(ready_) - static_cast<int32_t>(padding_); }

  // Whether there is nothing but zeros up to the end of the data.
  bool OnlyZerosLeft() const {
    return bits_ == 0 && std::all_of(next_, end_, [](uint8_t byte) { return byte == 0; });
  }

 private:
  static BitReader PreparedNearEnd(BitReader reader) {
    for (; reader.ready_ <= 56; reader.ready_ += 8) {
      if (reader.next_ == reader.end_) {
        reader.padding_ += 8;
      } else {
        reader.bits_ |= uint64_t{*reader.next_++} << (56 - reader.ready_);
      }
    }
    return reader;
  }

  uint64_t bits_ = 0;     // the next bit in the highest
  uint32_t ready_ = 0;    // of them, zeros past the end included
  uint32_t padding_ = 0;  // zeros past the end, in total
  uint8_t const* next_;
  uint8_t const* end_;
};

// The pixels of the next run; more than `width` if there is none, or none of at most
// `width` pixels. Takes that the bits of its first code are ready, and leaves those of one more.
template <size_t kEntries>
uint32_t ReadRun(BitReader& in, std::array<RunEntry, kEntries> const& table, uint32_t width) {
  constexpr uint32_t kLongestCode = std::bit_width(kEntries) - 1;
  for (uint32_t run = 0;;) {
    RunEntry const entry = table[in.Peek(kLongestCode)];
    if (entry.Length() == 0) [[unlikely]] {
      in.Skip(kLongestCode);
      return width + 1;
    }
    in.Skip(entry.Length());
    run += entry.Pixels();
    if (entry.Pixels() < kMakeUpUnit || run > width) return run;
    in.Prepare();
  }
}

struct Runs {
  uint32_t first;
  uint32_t second;
};

// The two runs of horizontal mode.
Runs ReadRuns(BitReader& in, bool white_first, uint32_t width) {
  if (white_first) {
    uint32_t const white = ReadRun(in, kWhiteRunTable, width);
    return {white, ReadRun(in, kBlackRunTable, width)};
  }
  uint32_t const black = ReadRun(in, kBlackRunTable, width);
  return {black, ReadRun(in, kWhiteRunTable, width)};
}

// Why a row is abandoned where a code is, or should be.
Outcome CodeFailure(BitReader const& in) {
  return in.Left() < 0 ? Outcome::kDataEnded : Outcome::kDamaged;
}

// Why a row is abandoned where there is no mode's code.
Outcome ModeFailure(BitReader const& in) {
  constexpr uint32_t kLength = kEndOfBlockCode.length;
  auto const left = static_cast<uint32_t>(std::clamp<int32_t>(in.Left(), 0, kLength));
  uint32_t const other = in.Peek(kLength) ^ static_cast<uint32_t>(kEndOfBlockCode.bits);
  bool const end_of_block = other >> (kLength - left) == 0;
  return end_of_block || in.OnlyZerosLeft() ? Outcome::kDataEnded : Outcome::kDamaged;
}

// Decodes one row with the help of the one above it (T.6). The names are those of T.6: a0 is
// where decoding has come to, a1 is the next changing element of the row, to be found, b1 is the
// first one of the row above that is right of a0 and changes to the colour opposite to a0's, and b2
// the next. kDone, with `reader` after the row's codes, for a row that is complete.
Outcome DecodeRow(BitReader& reader, ChangingElements& row, ChangingElements& above,
                  uint32_t width) {
  BitReader in = reader;
  uint32_t const* const begin = row.Begin();
  uint32_t* a1 = row.Begin();
  uint32_t const* b1 = above.Begin();
  uint32_t const* a_limit = row.WriteLimit();
  uint32_t const* b_limit = above.Limit();
  uint32_t a0 = 0;
  for (;;) {
    in.Prepare();
    ModeEntry const& code = kModeTable[in.Peek(kModeBits)];
    in.Skip(code.length);
    if (code.mode == Mode::kPass) {
      a0 = b1[1];
      b1 += 2;
    } else if (code.mode == Mode::kVertical) {
      uint32_t const column = *b1 + static_cast<uint32_t>(code.distance);
      if (column < a0 || column > width) [[unlikely]] {
        return CodeFailure(in);
      }
      *a1++ = a0 = column;
      b1 = OtherColour(b1, a0);
    } else if (code.mode == Mode::kHorizontal) {
      auto const [first, second] = ReadRuns(in, (a1 - begin) % 2 == 0, width);
      if (first > width - a0 || second > width - a0 - first) [[unlikely]] {
        return CodeFailure(in);
      }
      *a1++ = a0 + first;
      *a1++ = a0 = a0 + first + second;
    } else {
      return ModeFailure(in);
    }
    if (a0 == width) break;
    // Kept: an empty run above may leave b1 at a0 after passes at the row's start, and only there;
    // other decoders take data with such runs like that.
    while (*b1 <= a0 && a1 != begin) b1 += 2;
    if (b1 > b_limit) [[unlikely]] {
      b1 = above.Advance(b1, a0);
      b_limit = above.Limit();
    }
    if (a1 > a_limit) [[unlikely]] {
      a1 = row.MakeRoom(a1);
      if (a1 == nullptr) return Outcome::kDamaged;
      a_limit = row.WriteLimit();
    }
  }
  if (in.Left() < 0) return Outcome::kDataEnded;
  row.Finish(a1);
  reader = in;
  return Outcome::kDone;
}

// `take_row` gets each row with its list complete and its runs not yet painted, and gives false to
// stop. A row whose list is cut must be painted, since the next one is decoded from its pixels.
template <typename TakeRow>
DecodeResult DecodeRows(std::span<uint8_t const> data, Picture picture, TakeRow take_row) {
  auto row = std::make_unique<ChangingElements>(picture.width);
  auto above = std::make_unique<ChangingElements>(picture.width);
  BitReader in(data);
  for (uint32_t y = 0; y < picture.height; ++y) {
    row->Clear();
    above->Rewind();
    Outcome const outcome = DecodeRow(in, *row, *above, picture.width);
    if (outcome != Outcome::kDone) return {outcome, y};
    if (!take_row(*row, y)) return {Outcome::kStopped, y};
    std::swap(row, above);
  }
  return {Outcome::kDone, picture.height};
}

}  // namespace

DecodeResult DecodeGroup4(std::span<uint8_t const> data, Picture picture, RowCallback rows) {
  size_t const row_bytes = (size_t{picture.width} + 7) / 8;
  return DecodeRows(data, picture, [&](ChangingElements& row, uint32_t y) {
    row.Paint();
    return rows(row.Row().first(row_bytes), y);
  });
}

DecodeResult CheckGroup4(std::span<uint8_t const> data, Picture picture) {
  return DecodeRows(data, picture, [](ChangingElements& row, uint32_t) {
    if (row.IsCut()) row.Paint();
    return true;
  });
}

}  // namespace sorrelin::cadwick

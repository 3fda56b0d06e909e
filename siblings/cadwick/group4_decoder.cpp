// Decodes Group 4 data into rows of one-bit pixels.
#include <siblings/cadwick/changing_elements.h>
#include <siblings/cadwick/group4.h>
#include <siblings/cadwick/group4_tables.h>
#include <siblings/cadwick/mode_groups.h>
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

  // Makes at least 56 bits ready.
  void Prepare() {
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
uint32_t ReadRun(BitReader& in, bool black, uint32_t width) {
  RunEntry const* const table = black ? kBlackRunTable.data() : kWhiteRunTable.data();
  uint32_t const longest_code = black ? kBlackRunBits : kWhiteRunBits;
  for (uint32_t run = 0;;) {
    RunEntry const entry = table[in.Peek(longest_code)];
    if (entry.Length() == 0) [[unlikely]] {
      in.Skip(longest_code);
      return width + 1;
    }
    in.Skip(entry.Length());
    run += entry.Pixels();
    if (entry.Pixels() < kMakeUpUnit || run > width) return run;
    in.Prepare();
  }
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
// the next.
class RowDecoder {
 public:
  // kDone, with `reader` after the row's codes, for a row that is complete.
  static Outcome Decode(BitReader& reader, ChangingElements& row, ChangingElements& above,
                        uint32_t width) {
    // A local object, so that its members stay in registers.
    RowDecoder decoder(reader, row, above, width);
    for (;;) {
      decoder.in_.Prepare();
      Mode mode = decoder.TakeGroup();
      if (mode == Mode::kVertical) continue;
      if (mode == Mode::kInvalid) mode = decoder.TakeCode();
      if (mode == Mode::kInvalid) [[unlikely]] {
        return decoder.failure_;
      }
      if (mode == Mode::kPass) {
        decoder.TakePass();
      } else if (mode == Mode::kHorizontal && !decoder.TakeRuns()) [[unlikely]] {
        return CodeFailure(decoder.in_);
      }
      if (decoder.a0_ == width) break;
      if (!decoder.FollowA0()) [[unlikely]] {
        return Outcome::kDamaged;
      }
    }
    if (decoder.in_.Left() < 0) return Outcome::kDataEnded;
    row.Finish(decoder.a1_);
    reader = decoder.in_;
    return Outcome::kDone;
  }

 private:
  RowDecoder(BitReader const& in, ChangingElements& row, ChangingElements& above, uint32_t width)
      : in_(in), row_(row), above_(above), width_(width), a1_(row.Begin()), b1_(above.Begin()) {
    a1_limit_ = row_.WriteLimit();
    b1_limit_ = above_.Limit();
  }

  // Takes vertical codes as long as they have nothing special, and a code of another mode that
  // follows. Returns the mode of the last one; kInvalid if the next code is to be taken by itself.
  Mode TakeGroup() {
    if (b1_ + ChangingElements::kLookAhead > b1_limit_ || a1_ + kGroupCodes > a1_limit_)
        [[unlikely]] {
      return Mode::kInvalid;
    }
    ModeGroup const& group = kModeGroups[in_.Peek(kGroupBits)];
    uint32_t const fitting = PlaceSideBySide(b1_, group.distances, a0_, a1_);
    if ((~fitting & group.mask) != 0) [[unlikely]] {
      uint32_t const count = static_cast<uint32_t>(std::countr_one(fitting));
      if (count != 0) Advance(count, group.LengthOf(count));
      return Mode::kInvalid;
    }
    Advance(group.count, group.length);
    return group.last;
  }

  void Advance(uint32_t count, uint32_t length) {
    in_.Skip(length);
    a1_ += count;
    b1_ += count;
    uint32_t const last = a1_[-1];
    a0_ = count != 0 ? last : a0_;
  }

  // Takes one code, and gives its mode: kVertical once its element is found, kInvalid with
  // `failure_` set.
  Mode TakeCode() {
    ModeEntry const& code = kModeTable[in_.Peek(kModeBits)];
    in_.Skip(code.length);
    if (code.mode == Mode::kVertical) {
      uint32_t const column = *b1_ + static_cast<uint32_t>(code.distance);
      if (column < a0_ || column > width_) [[unlikely]] {
        failure_ = CodeFailure(in_);
        return Mode::kInvalid;
      }
      *a1_++ = a0_ = column;
      b1_ = OtherColour(b1_, a0_);
    } else if (code.mode == Mode::kInvalid) {
      failure_ = ModeFailure(in_);
    }
    return code.mode;
  }

  void TakePass() {
    a0_ = b1_[1];
    b1_ += 2;
  }

  // The two runs of horizontal mode, both read before either is judged. False if the row has no
  // room for them.
  bool TakeRuns() {
    bool black = (a1_ - row_.Begin()) % 2 != 0;
    std::array<uint32_t, 2> runs;
    for (uint32_t& run : runs) {
      run = ReadRun(in_, black, width_);
      black = !black;
    }
    auto const [first, second] = runs;
    if (first > width_ - a0_ || second > width_ - a0_ - first) return false;
    *a1_++ = a0_ + first;
    *a1_++ = a0_ = a0_ + first + second;
    return true;
  }

  // Brings b1 right of a0 again, and both lists' windows to their places. False if the row has too
  // many elements.
  bool FollowA0() {
    // Kept: an empty run above may leave b1 at a0 after passes at the row's start, and only there;
    // other decoders take data with such runs like that.
    while (*b1_ <= a0_ && a1_ != row_.Begin()) b1_ += 2;
    if (b1_ > b1_limit_) [[unlikely]] {
      b1_ = above_.Advance(b1_, a0_);
      b1_limit_ = above_.Limit();
    }
    if (a1_ > a1_limit_) [[unlikely]] {
      a1_ = row_.MakeRoom(a1_);
      if (a1_ == nullptr) return false;
      a1_limit_ = row_.WriteLimit();
    }
    return true;
  }

  BitReader in_;
  ChangingElements& row_;
  ChangingElements& above_;
  uint32_t const width_;
  uint32_t a0_ = 0;
  uint32_t* a1_;
  uint32_t const* b1_;
  uint32_t const* a1_limit_;
  uint32_t const* b1_limit_;
  Outcome failure_ = Outcome::kDamaged;
};

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
    Outcome const outcome = RowDecoder::Decode(in, *row, *above, picture.width);
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

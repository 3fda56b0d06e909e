// Codes rows of one-bit pixels into Group 4 data.
#include <siblings/cadwick/changing_elements.h>
#include <siblings/cadwick/group4.h>
#include <siblings/cadwick/group4_tables.h>
#include <siblings/cadwick/pixel_words.h>

#include <array>
#include <memory>
#include <utility>

namespace sorrelin::cadwick {
namespace {

// Collects coded bytes and hands them to the sink by the block.
class ByteBuffer {
 public:
  explicit ByteBuffer(ByteSink& sink) : sink_(sink) {}

  uint8_t* Begin() { return bytes_.data(); }
  uint8_t const* End() const { return bytes_.data() + bytes_.size(); }

  // Passes on the bytes before `end`, which empties the buffer. Nothing more is passed on after
  // the sink has refused.
  void Deliver(uint8_t const* end) { accepted_ = accepted_ && sink_.Write({bytes_.data(), end}); }
  bool Accepted() const { return accepted_; }

 private:
  ByteSink& sink_;
  bool accepted_ = true;
  std::array<uint8_t, 1024 * kWordBytes> bytes_;
};

// Appends codes, the first bit in the highest bit of the first byte. Small
// enough to be passed by value, so that its members stay in registers while a row is coded.
class BitWriter {
 public:
  explicit BitWriter(ByteBuffer& buffer)
      : buffer_(&buffer), next_(buffer.Begin()), end_(buffer.End()) {}

  // At most 63 bits.
  void Put(Code code) {
    if (code.length < free_) {
      word_ = word_ << code.length | code.bits;
      free_ -= code.length;
      return;
    }
    uint32_t const rest = code.length - free_;
    PutWord(Left() | code.bits >> rest);
    word_ = code.bits;
    free_ = kWordBits - rest;
  }

  // Pads the last byte with zeros and delivers what is left.
  void Finish() {
    uint64_t word = Left();
    for (uint32_t used = kWordBits - free_, sent = 0; sent < used; sent += 8) {
      *next_++ = static_cast<uint8_t>(word >> (kWordBits - 8));
      word <<= 8;
    }
    buffer_->Deliver(next_);
  }

 private:
  static constexpr uint32_t kWordBits = 64;

  // The bits of `word_` from the highest bit on. 64 places at once would be undefined.
  uint64_t Left() const { return word_ << (free_ - 1) << 1; }

  void PutWord(uint64_t word) {
    StoreWord(next_, BigEndian(word));
    next_ += kWordBytes;
    if (next_ == end_) {
      buffer_->Deliver(next_);
      next_ = buffer_->Begin();
    }
  }

  uint64_t word_ = 0;          // bits that are not in the buffer yet, the last in the lowest bit
  uint32_t free_ = kWordBits;  // bits of `word_` that they leave, always 1 or more
  ByteBuffer* buffer_;
  uint8_t* next_;
  uint8_t const* end_;
};

// `before` followed by the codes of a run. What does not fit into one Code is put out first.
Code WithRun(Code before, RunCodes const& codes, uint32_t pixels, BitWriter& out) {
  while (pixels >= kLongestMakeUp + kMakeUpUnit) [[unlikely]] {
      out.Put(before);
      before = codes.make_up.back();
      pixels -= kLongestMakeUp;
    }
  return before + codes.make_up[pixels / kMakeUpUnit] + codes.terminating[pixels % kMakeUpUnit];
}

// Codes one row against the one above it (T.6). The names are those of T.6: a0 is where
// coding has come to, a1 and a2 are the next changing elements of the row, b1 is the first one of
// the row above that is right of a0 and changes to the colour opposite to a0's, and b2 the next.
BitWriter EncodeRow(ChangingElements& row, ChangingElements& above, uint32_t width, BitWriter out) {
  uint32_t const* const begin = row.Begin();
  uint32_t const* a1 = begin;
  uint32_t const* b1 = above.Begin();
  uint32_t const* a_limit = row.Limit();
  uint32_t const* b_limit = above.Limit();
  uint32_t a0 = 0;
  for (;;) {
    uint32_t const distance = a1[0] - b1[0] + kMaxVerticalDistance;
    if (b1[1] < a1[0]) {
      out.Put(kPassCode);
      a0 = b1[1];
      b1 += 2;
    } else if (distance < kVerticalCodes.size()) {
      out.Put(kVerticalCodes[distance]);
      a0 = *a1++;
      b1 = OtherColour(b1, a0);
    } else {
      size_t const colour = static_cast<size_t>(a1 - begin) % 2;
      Code const first = WithRun(kHorizontalCode, kRunCodes[colour], a1[0] - a0, out);
      out.Put(WithRun(first, kRunCodes[1 - colour], a1[1] - a1[0], out));
      a0 = a1[1];
      a1 += 2;
    }
    if (a0 == width) {
      return out;
    }
    while (*b1 <= a0) {
      b1 += 2;
    }
    if (b1 > b_limit) [[unlikely]] {
      b1 = above.Advance(b1, a0);
      b_limit = above.Limit();
    }
    if (a1 > a_limit) [[unlikely]] {
      a1 = row.Advance(a1, a0);
      a_limit = row.Limit();
    }
  }
}

}  // namespace

struct Group4Encoder::State {
  State(Picture picture, ByteSink& sink)
      : width(picture.width), first(width), second(width), buffer(sink), out(buffer) {}

  uint32_t const width;
  ChangingElements first, second;
  ChangingElements* row = &first;
  ChangingElements* above = &second;
  ByteBuffer buffer;
  BitWriter out;
};

Group4Encoder::Group4Encoder(Picture picture, ByteSink& sink)
    : state_(std::make_unique<State>(picture, sink)) {}

Group4Encoder::~Group4Encoder() = default;

std::span<uint8_t> Group4Encoder::Row() { return state_->row->Row(); }

bool Group4Encoder::Encode() {
  State& state = *state_;
  state.row->FindElements();
  state.above->Rewind();
  state.out = EncodeRow(*state.row, *state.above, state.width, state.out);
  std::swap(state.row, state.above);
  return state.buffer.Accepted();
}

void Group4Encoder::Flush() { state_->out.Finish(); }

bool Group4Encoder::Finish() {
  state_->out.Put(kEndOfBlockCode);
  Flush();
  return state_->buffer.Accepted();
}

Outcome EncodeGroup4(Picture picture, RowCallback rows, ByteSink& sink) {
  Group4Encoder encoder(picture, sink);
  for (uint32_t y = 0; y < picture.height; ++y) {
    if (!rows(encoder.Row(), y)) {
      encoder.Flush();
      return Outcome::kStopped;
    }
    if (!encoder.Encode()) return Outcome::kSinkFailed;
  }
  return encoder.Finish() ? Outcome::kDone : Outcome::kSinkFailed;
}

}  // namespace sorrelin::cadwick

// Whether a page's content stream draws its image upside down.
#include <sorrelin/syntax/page_flip.h>

#include <charconv>
#include <cstring>
#include <limits>

namespace sorrelin {
namespace {

// Matrices on the stack, so that a hostile text cannot take memory without end. Further ones are
// not saved.
constexpr size_t kMostSaved = 65536;

bool IsSeparator(BYTE c) { return c == ' ' || c == '\r' || c == '\n' || c == '\t'; }

// A decimal number up to the first other character; 0 if there is none.
double ParseNumber(std::string_view text) {
  bool const negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  // The conversion would take names of infinities as well.
  if (text.empty() || (text[0] != '.' && (text[0] < '0' || text[0] > '9'))) return 0;
  double value = 0;
  auto const [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (error == std::errc::result_out_of_range && text[0] != '.' && text[0] != '0') {
    value = std::numeric_limits<double>::max();
  }
  return negative ? -value : value;
}

}  // namespace

int IsPageContentFlipped(char const* text) {
  if (text == nullptr) return 0;
  PageFlipTest test;
  test.Feed({reinterpret_cast<BYTE const*>(text), std::strlen(text)});
  return test.Finish();
}

bool PageFlipTest::Feed(std::span<BYTE const> text) {
  for (BYTE const c : text) {
    if (ended_) return false;
    if (c == 0 || IsSeparator(c)) {
      EndToken();
      ended_ = ended_ || c == 0;
    } else if (token_bytes_ < kTokenBytes) {
      token_[token_bytes_++] = static_cast<char>(c);
    }
  }
  return !ended_;
}

int PageFlipTest::Finish() {
  if (!ended_) EndToken();
  ended_ = true;
  return flipped_ ? 1 : 0;
}

void PageFlipTest::EndToken() {
  if (token_bytes_ == 0) return;
  std::string_view const token(token_.data(), token_bytes_);
  if (token == "Do") {
    flipped_ = matrix_.d < 0;
    ended_ = true;
    return;
  }
  if (token == "cm") Concatenate();
  if (token == "q") Save();
  if (token == "Q") Restore();
  operands_[next_] = ParseNumber(token);
  next_ = (next_ + 1) % kOperands;
  full_ = full_ || next_ == 0;
  token_bytes_ = 0;
}

void PageFlipTest::Concatenate() {
  if (!full_) return;
  auto const operand = [this](size_t i) { return operands_[(next_ + i) % kOperands]; };
  Matrix const by{operand(0), operand(1), operand(2), operand(3)};
  matrix_ = {by.a * matrix_.a + by.b * matrix_.c, by.a * matrix_.b + by.b * matrix_.d,
             by.c * matrix_.a + by.d * matrix_.c, by.c * matrix_.b + by.d * matrix_.d};
}

void PageFlipTest::Save() {
  if (saved_.size() < kMostSaved) saved_.push_back(matrix_);
}

void PageFlipTest::Restore() {
  if (saved_.empty()) return;
  matrix_ = saved_.back();
  saved_.pop_back();
}

}  // namespace sorrelin

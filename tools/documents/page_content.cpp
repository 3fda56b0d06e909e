// Follows the part of the matrix that scales: displacements do not change sizes.
#include "tools/documents/page_content.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

namespace sorrelin::tool {
namespace {

constexpr size_t kOperands = 6;    // of "cm"
constexpr size_t kMaxSaved = 512;  // states; pages save a few

struct Matrix {
  double a = 1, b = 0, c = 0, d = 1;
};

class Content {
 public:
  void Take(std::string_view token) {
    if (token == "cm") Concatenate();
    if (token == "q" && saved_.size() < kMaxSaved) saved_.push_back(matrix_);
    if (token == "Q" && !saved_.empty()) Restore();
    if (token == "Do" && last_.starts_with('/')) Draw(std::string(last_.substr(1)));
    operands_[tokens_++ % kOperands] = NumberOf(token);
    last_ = token;
  }

  std::map<std::string, DrawnSize> TakeDrawn() { return std::move(drawn_); }

 private:
  // 0 for what is no number.
  static double NumberOf(std::string_view token) {
    if (token.starts_with('+')) token.remove_prefix(1);
    double number = 0;
    std::from_chars(token.data(), token.data() + token.size(), number);
    return std::isfinite(number) ? number : 0;
  }

  double Operand(size_t i) const { return operands_[(tokens_ + i) % kOperands]; }

  void Concatenate() {
    Matrix const m = {Operand(0), Operand(1), Operand(2), Operand(3)};
    matrix_ = {m.a * matrix_.a + m.b * matrix_.c, m.a * matrix_.b + m.b * matrix_.d,
               m.c * matrix_.a + m.d * matrix_.c, m.c * matrix_.b + m.d * matrix_.d};
  }

  void Restore() {
    matrix_ = saved_.back();
    saved_.pop_back();
  }

  void Draw(std::string const& name) {
    drawn_.try_emplace(name, DrawnSize{std::hypot(matrix_.a, matrix_.b),
                                       std::hypot(matrix_.c, matrix_.d), matrix_.d < 0});
  }

  Matrix matrix_;
  std::vector<Matrix> saved_;
  std::array<double, kOperands> operands_{};  // values of the last tokens, a ring
  size_t tokens_ = 0;
  std::string_view last_;
  std::map<std::string, DrawnSize> drawn_;
};

}  // namespace

std::map<std::string, DrawnSize> DrawnPictures(std::string_view content) {
  Content state;
  for (size_t at = 0; at < content.size();) {
    size_t const start = content.find_first_not_of(" \t\r\n\f", at);
    if (start == content.npos) break;
    size_t const end = content.find_first_of(" \t\r\n\f/[](){}<>", start + 1);
    state.Take(content.substr(start, end - start));
    at = std::min(end, content.size());
  }
  return state.TakeDrawn();
}

}  // namespace sorrelin::tool

// The interpreter of calculator functions. True is 1 and false 0; integers are kept as doubles,
// which hold them exactly.
#include "tools/extract/colour/calculator.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>

namespace sorrelin::tool {
namespace {

constexpr int kMaxDepth = 32;
constexpr size_t kMaxStack = 100;
constexpr size_t kMaxSteps = 10000;
constexpr double kDegrees = 180 / std::numbers::pi;

int64_t Whole(double value) {
  return std::abs(value) < 1e15 ? static_cast<int64_t>(value) : int64_t{0};
}

double Shifted(double value, double places) {
  int64_t const bits = Whole(value), count = std::clamp<int64_t>(Whole(places), -31, 31);
  if (count < 0) return static_cast<double>(static_cast<uint32_t>(bits) >> -count);
  return static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(bits) << count));
}

double Turned(double y, double x) {
  double const angle = std::atan2(y, x) * kDegrees;
  return angle < 0 ? angle + 360 : angle;
}

}  // namespace

bool Calculator::Read(std::string_view text) {
  size_t at = text.find('{');
  if (at == text.npos) return false;
  ++at;
  return ReadBlock(text, at, program_, 0);
}

bool Calculator::ReadBlock(std::string_view text, size_t& at, std::vector<Step>& block, int depth) {
  constexpr std::string_view kBlanks(" \t\r\n\f\0", 6);
  while (depth <= kMaxDepth) {
    at = text.find_first_not_of(kBlanks, at);
    if (at == text.npos) return false;
    if (text[at] == '}') return ++at, true;
    if (text[at] == '{') {
      block.push_back({"{", 0, {}});
      if (!ReadBlock(text, ++at, block.back().block, depth + 1)) return false;
      continue;
    }
    size_t const end = std::min(text.find_first_of(" \t\r\n\f{}", at + 1), text.size());
    std::string_view const word = text.substr(at, end - at);
    double number = 0;
    auto const [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    bool const is_number = error == std::errc{} && stop == word.data() + word.size();
    block.push_back(is_number ? Step{"", number, {}} : Step{std::string(word), 0, {}});
    at = end;
  }
  return false;
}

std::vector<double> Calculator::Run(std::vector<double> stack) const {
  size_t steps = 0;
  RunBlock(program_, stack, steps);
  return stack;
}

bool Calculator::RunBlock(std::vector<Step> const& block, Stack& stack, size_t& steps) {
  for (size_t i = 0; i < block.size(); ++i) {
    Step const& step = block[i];
    if (++steps > kMaxSteps || stack.size() > kMaxStack) return false;
    if (step.word.empty()) {
      stack.push_back(step.number);
    } else if (step.word == "if" || step.word == "ifelse") {
      size_t const blocks = step.word == "if" ? 1 : 2;
      if (i < blocks || stack.empty()) return false;
      bool const yes = stack.back() != 0;
      stack.pop_back();
      if (!yes && blocks == 1) continue;
      if (!RunBlock(block[yes ? i - blocks : i - 1].block, stack, steps)) return false;
    } else if (step.word != "{" && !RunWord(step.word, stack)) {
      return false;
    }
  }
  return true;
}

bool Calculator::RunWord(std::string const& word, Stack& stack) {
  if (word == "true" || word == "false") return stack.push_back(word == "true" ? 1 : 0), true;
  return RunStackWord(word, stack) || RunUnary(word, stack) || RunBinary(word, stack);
}

bool Calculator::RunStackWord(std::string const& word, Stack& stack) {
  if (stack.empty()) return false;
  double const top = stack.back();
  if (word == "pop") return stack.pop_back(), true;
  if (word == "dup") return stack.push_back(top), true;
  if (word == "exch" && stack.size() >= 2) {
    std::swap(stack.back(), stack[stack.size() - 2]);
    return true;
  }
  if (word == "copy" || word == "index") {
    uint64_t const wanted = static_cast<uint64_t>(std::max<int64_t>(Whole(top), 0));
    if (wanted + 1 > stack.size() - (word == "index" ? 1 : 0)) return false;
    size_t const count = static_cast<size_t>(wanted);
    stack.pop_back();
    if (word == "index") return stack.push_back(stack[stack.size() - 1 - count]), true;
    if (count > stack.size()) return false;
    for (size_t i = 0; i < count; ++i) stack.push_back(stack[stack.size() - count]);
    return true;
  }
  if (word != "roll" || stack.size() < 2) return false;
  int64_t const wanted = Whole(stack[stack.size() - 2]);
  if (wanted < 0 || static_cast<uint64_t>(wanted) + 2 > stack.size()) return false;
  std::ptrdiff_t const count = static_cast<std::ptrdiff_t>(wanted);
  std::ptrdiff_t const turn = static_cast<std::ptrdiff_t>(count == 0 ? 0 : Whole(top) % wanted);
  std::ptrdiff_t const by = turn < 0 ? turn + count : turn;
  stack.resize(stack.size() - 2);
  std::rotate(stack.end() - count, stack.end() - by, stack.end());
  return true;
}

bool Calculator::RunUnary(std::string const& word, Stack& stack) {
  if (stack.empty()) return false;
  double& x = stack.back();
  if (word == "abs") return x = std::abs(x), true;
  if (word == "neg") return x = -x, true;
  if (word == "ceiling") return x = std::ceil(x), true;
  if (word == "floor") return x = std::floor(x), true;
  if (word == "round") return x = std::floor(x + 0.5), true;
  if (word == "truncate" || word == "cvi") return x = std::trunc(x), true;
  if (word == "cvr") return true;
  if (word == "sqrt") return x = std::sqrt(std::max(x, 0.0)), true;
  if (word == "sin") return x = std::sin(x / kDegrees), true;
  if (word == "cos") return x = std::cos(x / kDegrees), true;
  if (word == "ln") return x = std::log(std::max(x, 1e-300)), true;
  if (word == "log") return x = std::log10(std::max(x, 1e-300)), true;
  if (word == "not") return x = x == 0 ? 1 : x == 1 ? 0 : static_cast<double>(~Whole(x)), true;
  return false;
}

bool Calculator::RunBinary(std::string const& word, Stack& stack) {
  if (stack.size() < 2) return false;
  double const b = stack.back();
  double& a = stack[stack.size() - 2];
  if (word == "add")
    a += b;
  else if (word == "sub")
    a -= b;
  else if (word == "mul")
    a *= b;
  else if (word == "div")
    a = b == 0 ? 0 : a / b;
  else if (word == "idiv")
    a = Whole(b) == 0 ? 0 : static_cast<double>(Whole(a) / Whole(b));
  else if (word == "mod")
    a = Whole(b) == 0 ? 0 : static_cast<double>(Whole(a) % Whole(b));
  else if (word == "exp")
    a = std::pow(a, b);
  else if (word == "atan")
    a = Turned(a, b);
  else if (word == "eq")
    a = a == b ? 1 : 0;
  else if (word == "ne")
    a = a != b ? 1 : 0;
  else if (word == "gt")
    a = a > b ? 1 : 0;
  else if (word == "ge")
    a = a >= b ? 1 : 0;
  else if (word == "lt")
    a = a < b ? 1 : 0;
  else if (word == "le")
    a = a <= b ? 1 : 0;
  else if (word == "and")
    a = static_cast<double>(Whole(a) & Whole(b));
  else if (word == "or")
    a = static_cast<double>(Whole(a) | Whole(b));
  else if (word == "xor")
    a = static_cast<double>(Whole(a) ^ Whole(b));
  else if (word == "bitshift")
    a = Shifted(a, b);
  else
    return false;
  stack.pop_back();
  return true;
}

}  // namespace sorrelin::tool

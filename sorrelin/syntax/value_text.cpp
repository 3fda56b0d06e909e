// The cutting of a value out of an object's bytes: a pass that looks for a dictionary, a pass for
// everything else, and the following of references.
#include <sorrelin/syntax/decimal.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/scanner.h>
#include <sorrelin/syntax/value_text.h>

#include <string_view>
#include <utility>

namespace sorrelin {
namespace {

constexpr int kReferenceLevels = 32;

ValueText Isolate(ObjectSource* objects, ByteView rest, int level);

bool IsOctalDigit(BYTE c) { return c >= '0' && c <= '7'; }

// What the look for a dictionary found: its text, or where an unclosed one begins (0 for none).
struct DictionaryPass {
  std::optional<std::string> text;
  uint64_t unclosed_at = 0;
};

// A value of another kind: nothing of it can open a dictionary.
bool BeginsOtherValue(BYTE c) { return c == '(' || c == '/' || c == '[' || IsWhiteSpace(c); }

bool IsPair(ByteView text, uint64_t at, BYTE c) { return text[at] == c && text[at + 1] == c; }

// The bytes from `begin` through `last` and one more, which is the byte after the dictionary.
std::string TextThrough(ByteView text, uint64_t begin, uint64_t last) {
  std::string copy;
  for (uint64_t at = begin; at <= last + 1; ++at) copy += static_cast<char>(text[at]);
  return copy;
}

// Kept: inside a dictionary only pairs of angle brackets count, those in strings included, and
// "<<<" counts twice there.
DictionaryPass FindDictionary(ByteView text) {
  DictionaryPass pass;
  int64_t depth = 0;
  for (uint64_t at = SkipWhiteSpace(text, 0); at + 1 < text.size; ++at) {
    if (depth == 0 && BeginsOtherValue(text[at])) break;
    if (depth > 0 && IsPair(text, at, '>')) {
      ++at;
      if (--depth == 0) {
        pass.text = TextThrough(text, pass.unclosed_at, at);
        return pass;
      }
    } else if (IsPair(text, at, '<')) {
      if (depth++ == 0) pass.unclosed_at = at++;
    }
  }
  return pass;
}

// The pass for strings, names, arrays and numbers: writes the value, escapes resolved.
class ValuePass {
 public:
  // Kept: the output begins with as many NULs as bytes precede an unclosed dictionary, so that
  // such a value reads as empty, and its size does not. It has room for one byte more than the
  // text; what would go past that counts and reads as 0.
  ValuePass(ByteView text, uint64_t unclosed_at)
      : text_(text), output_(static_cast<size_t>(unclosed_at), '\0') {}

  void Run() {
    at_ = SkipWhiteSpace(text_, 0);
    while (at_ + 1 < text_.size && !IsAtEnd()) Take();
  }
  std::string const& output() const { return output_; }
  uint64_t position() const { return at_; }

 private:
  bool IsAtEnd() const {
    return IsDelimiterChar(text_[at_]) && !output_.empty() && parentheses_ <= 0 && brackets_ <= 0 &&
           angles_ <= 0;
  }

  void Take() {
    BYTE const c = text_[at_++];
    if (c == '\\') {
      Put(TakeEscaped());
      return;
    }
    Count(c);
    Put(c);
  }

  void Put(BYTE c) { output_ += output_.size() <= text_.size ? static_cast<char>(c) : '\0'; }

  void Count(BYTE c) {
    if (parentheses_ == 0 && angles_ == 0) brackets_ += (c == '[') - (c == ']');
    if (angles_ == 0) parentheses_ += (c == '(') - (c == ')');
    if (parentheses_ == 0) angles_ += (c == '<') - (c == '>');
  }

  BYTE TakeEscaped() {
    if (IsOctalDigit(text_[at_])) return TakeOctal();
    BYTE const c = text_[at_++];
    switch (c) {
      case 'b':
        return '\b';
      case 'f':
        return '\f';
      case 'n':
        return '\n';
      case 'r':
        return '\r';
      case 't':
        return '\t';
      default:
        return c;
    }
  }

  BYTE TakeOctal() {
    int value = 0;
    for (int digits = 0; digits < 3 && IsOctalDigit(text_[at_]); ++digits) {
      value = value * 8 + (text_[at_++] - '0');
    }
    return static_cast<BYTE>(value);
  }

  ByteView text_;
  std::string output_;
  uint64_t at_ = 0;
  int64_t parentheses_ = 0;
  int64_t brackets_ = 0;
  int64_t angles_ = 0;
};

// What follows a number: the next token, and whether an "R" follows it.
struct NumberTail {
  std::string token;
  bool has_r = false;
};

NumberTail ReadTail(ByteView text, uint64_t at) {
  NumberTail tail;
  at = SkipWhiteSpace(text, at);
  do {
    tail.token += static_cast<char>(text[at++]);
  } while (!IsDelimiterChar(text[at]));
  tail.has_r = text[SkipWhiteSpace(text, at + 1)] == 'R';
  return tail;
}

ValueText FollowReference(ObjectSource* objects, DWORD number, int level) {
  if (objects == nullptr || level == kReferenceLevels) return {};
  std::optional<std::string> const text = objects->TextOf(number);
  size_t const keyword = text ? text->find("obj") : std::string::npos;
  if (keyword == std::string::npos) return {};
  std::string body = text->substr(keyword + 3);
  ValueText value = Isolate(objects, ViewOf(body), level + 1);
  if (value.result != 0) {
    DWORD const size = static_cast<DWORD>(body.size() + 1);
    return {0, std::move(body), size};
  }
  value.result = 1;
  return value;
}

ValueText Isolate(ObjectSource* objects, ByteView rest, int level) {
  DictionaryPass dictionary = FindDictionary(rest);
  if (dictionary.text) return {1, std::move(dictionary.text), std::nullopt};
  ValuePass pass(rest, dictionary.unclosed_at);
  pass.Run();
  DWORD const size = static_cast<DWORD>(pass.output().size());
  if (!IsAllDigits(pass.output().c_str())) return {1, pass.output(), size};
  NumberTail const tail = ReadTail(rest, pass.position());
  if (!IsAllDigits(tail.token.c_str())) return {1, pass.output(), size};
  if (!tail.has_r) return {0, std::string(rest.Text()), size};
  return FollowReference(objects, static_cast<DWORD>(DecimalValue(pass.output())), level);
}

}  // namespace

ValueText IsolateValue(ObjectSource* objects, ByteView rest) { return Isolate(objects, rest, 0); }

}  // namespace sorrelin

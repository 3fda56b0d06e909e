// Recursive descent over an object's text.
#include "tools/documents/pdf_value.h"

#include <algorithm>
#include <charconv>

namespace sorrelin::tool {
namespace {

constexpr int kMaxDepth = 32;
constexpr int kMaxValues = 100'000;
constexpr size_t kMaxNumberDigits = 9;  // of an object's number

bool IsSpace(int c) {
  return c == 0 || c == '\t' || c == '\n' || c == '\f' || c == '\r' || c == ' ';
}

bool IsDelimiter(int c) {
  return c == -1 || IsSpace(c) ||
         std::string_view("()<>[]{}/%").find(static_cast<char>(c)) != std::string_view::npos;
}

bool IsDigit(int c) { return c >= '0' && c <= '9'; }

int HexDigit(int c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

}  // namespace

PdfValue const& PdfValue::operator[](std::string_view key) const {
  static PdfValue const kNone;
  for (size_t i = keys.size(); i-- > 0;) {
    if (keys[i] == key) return items[i];
  }
  return kNone;
}

void PdfValue::Remove(std::string_view key) {
  for (size_t i = keys.size(); i-- > 0;) {
    if (keys[i] != key) continue;
    keys.erase(keys.begin() + static_cast<ptrdiff_t>(i));
    items.erase(items.begin() + static_cast<ptrdiff_t>(i));
  }
}

int PdfValueReader::Peek(size_t ahead) const {
  return at_ + ahead < text_.size() ? static_cast<unsigned char>(text_[at_ + ahead]) : -1;
}

void PdfValueReader::SkipSpace() {
  for (;; ++at_) {
    if (Peek() == '%') {
      while (Peek() != -1 && Peek() != '\n' && Peek() != '\r') ++at_;
    }
    if (Peek() == -1 || !IsSpace(Peek())) return;
  }
}

bool PdfValueReader::Skip(std::string_view word) {
  SkipSpace();
  if (!text_.substr(at_).starts_with(word)) return false;
  at_ += word.size();
  return true;
}

std::optional<PdfValue> PdfValueReader::Read() {
  SkipSpace();
  if (++values_ > kMaxValues || depth_ > kMaxDepth) return std::nullopt;
  int const c = Peek();
  if (IsDigit(c) || c == '+' || c == '-' || c == '.') return ReadNumberOrReference();
  if (c == '/') return ReadName();
  if (c == '(') return ReadString();
  if (c == '[') return ReadArray();
  if (c == '<') return Peek(1) == '<' ? ReadDictionary() : ReadHexString();
  return ReadWord();
}

std::optional<PdfValue> PdfValueReader::ReadWord() {
  size_t const start = at_;
  while (!IsDelimiter(Peek())) ++at_;
  std::string_view const word = text_.substr(start, at_ - start);
  PdfValue value;
  if (word == "null") return value;
  value.kind = Kind::kBoolean;
  value.number = word == "true" ? 1 : 0;
  if (word == "true" || word == "false") return value;
  at_ = start;
  return std::nullopt;
}

// Digits alone, with a delimiter behind them.
std::optional<unsigned> PdfValueReader::ReadInteger() {
  SkipSpace();
  size_t const start = at_;
  while (IsDigit(Peek())) ++at_;
  size_t const digits = at_ - start;
  if (digits == 0 || digits > kMaxNumberDigits || !IsDelimiter(Peek())) return std::nullopt;
  unsigned value = 0;
  std::from_chars(text_.data() + start, text_.data() + at_, value);
  return value;
}

std::optional<PdfValue> PdfValueReader::ReadNumberOrReference() {
  size_t const start = at_;
  PdfValue value;
  auto const number = ReadInteger();
  size_t const behind_number = at_;
  if (number) {
    bool const pair = ReadInteger().has_value();
    SkipSpace();
    if (pair && Peek() == 'R' && IsDelimiter(Peek(1))) {
      ++at_;
      value.kind = Kind::kReference;
      value.number = *number;
      return value;
    }
  }
  at_ = number ? behind_number : start;
  if (!number) {
    while (!IsDelimiter(Peek())) ++at_;
  }
  std::string_view token = text_.substr(start, at_ - start);
  if (token.starts_with('+')) token.remove_prefix(1);
  auto const [end, error] = std::from_chars(token.data(), token.data() + token.size(), value.number,
                                            std::chars_format::fixed);
  if (error != std::errc{} || end != token.data() + token.size()) return std::nullopt;
  value.kind = Kind::kNumber;
  return value;
}

PdfValue PdfValueReader::ReadName() {
  PdfValue value;
  value.kind = Kind::kName;
  ++at_;
  while (!IsDelimiter(Peek())) {
    int const high = HexDigit(Peek(1)), low = HexDigit(Peek(2));
    if (Peek() == '#' && high >= 0 && low >= 0) {
      value.text += static_cast<char>(high * 16 + low);
      at_ += 3;
    } else {
      value.text += text_[at_++];
    }
  }
  return value;
}

// Behind a backslash.
void PdfValueReader::ReadEscape(std::string& text) {
  constexpr std::string_view kLetters = "nrtbf";
  constexpr std::string_view kMeanings = "\n\r\t\b\f";
  int const c = Peek();
  if (c == -1) return;
  ++at_;
  if (size_t const letter = kLetters.find(static_cast<char>(c)); letter != kLetters.npos) {
    text += kMeanings[letter];
  } else if (c >= '0' && c <= '7') {
    int code = c - '0';
    for (int i = 0; i < 2 && Peek() >= '0' && Peek() <= '7'; ++i) {
      code = code * 8 + (text_[at_++] - '0');
    }
    text += static_cast<char>(code);
  } else if (c == '\r') {
    if (Peek() == '\n') ++at_;
  } else if (c != '\n') {
    text += static_cast<char>(c);
  }
}

std::optional<PdfValue> PdfValueReader::ReadString() {
  PdfValue value;
  value.kind = Kind::kString;
  ++at_;
  for (int open = 1; Peek() != -1;) {
    char const c = text_[at_++];
    if (c == '\\') {
      ReadEscape(value.text);
      continue;
    }
    open += c == '(' ? 1 : c == ')' ? -1 : 0;
    if (open == 0) return value;
    // A line end of any form is LF in the string.
    if (c == '\r' && Peek() == '\n') ++at_;
    value.text += c == '\r' ? '\n' : c;
  }
  return std::nullopt;
}

std::optional<PdfValue> PdfValueReader::ReadHexString() {
  PdfValue value;
  value.kind = Kind::kString;
  int digits = 0;
  for (++at_; Peek() != -1; ++at_) {
    int const c = Peek();
    if (c == '>') {
      ++at_;
      return value;
    }
    int const digit = HexDigit(c);
    if (digit == -1 && !IsSpace(c)) return std::nullopt;
    if (digit == -1) continue;
    if (digits++ % 2 == 0) {
      value.text += static_cast<char>(digit * 16);
    } else {
      value.text.back() = static_cast<char>(value.text.back() + digit);
    }
  }
  return std::nullopt;
}

std::optional<PdfValue> PdfValueReader::ReadArray() {
  PdfValue value;
  value.kind = Kind::kArray;
  ++at_;
  ++depth_;
  while (!Skip("]")) {
    auto item = Read();
    if (!item) return std::nullopt;
    value.items.push_back(std::move(*item));
  }
  --depth_;
  return value;
}

std::optional<PdfValue> PdfValueReader::ReadDictionary() {
  PdfValue value;
  value.kind = Kind::kDictionary;
  at_ += 2;
  ++depth_;
  while (!Skip(">>")) {
    if (Peek() != '/') return std::nullopt;
    value.keys.push_back(ReadName().text);
    auto item = Read();
    if (!item) return std::nullopt;
    value.items.push_back(std::move(*item));
  }
  --depth_;
  return value;
}

}  // namespace sorrelin::tool

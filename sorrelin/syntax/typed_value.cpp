// The typed reader: a table of type codes and the reading that belongs to each.
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/decimal.h>
#include <sorrelin/syntax/heap_copy.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/scanner.h>
#include <sorrelin/syntax/typed_value.h>
#include <sorrelin/syntax/value_text.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace sorrelin {
namespace {

constexpr size_t kNumberScratch = 20;  // characters of a number that is looked for in any text

// Where a reading puts its result.
class Output {
 public:
  Output(void** block, uint64_t* size) : block_(block), size_(size) {}

  int Bytes(std::string_view bytes) const {
    *block_ = HeapCopy(bytes);
    *size_ = bytes.size();
    return 1;
  }
  template <class Value>
  int Number(Value const& value) const {
    return Bytes({reinterpret_cast<char const*>(&value), sizeof value});
  }
  // A text that one of the scanner's functions has made.
  int Adopt(char* text, uint64_t size) const {
    *block_ = text;
    *size_ = size;
    return 1;
  }

 private:
  void** block_;
  uint64_t* size_;
};

// A value text as the readings see it.
struct Value {
  std::string const& bytes;
  std::string_view text;  // up to the first NUL
  uint64_t reported;      // its size as reported
  int isolated;           // the result of its isolation

  uint64_t Extent() const { return std::max<uint64_t>(text.size(), reported); }
};

std::string_view TrimFront(std::string_view text) {
  return text.substr(static_cast<size_t>(SkipWhiteSpace(ViewOf(text), 0)));
}

// Digits, and what `extra` names, at the start of a text.
std::string_view LeadingNumber(std::string_view text, std::string_view extra = {}) {
  size_t count = 0;
  while (count < text.size() && (IsDigitChar(static_cast<BYTE>(text[count])) ||
                                 extra.find(text[count]) != std::string_view::npos)) {
    ++count;
  }
  return text.substr(0, count);
}

// The same after an optional "-".
std::string_view SignedNumber(std::string_view text, std::string_view extra = {}) {
  size_t const sign = text.starts_with('-') ? 1 : 0;
  return text.substr(0, sign + LeadingNumber(text.substr(sign), extra).size());
}

// The number at the start of a text, as atof reads it, whatever the locale.
double RealValue(std::string_view text) {
  double value = 0;
  std::from_chars_result const read =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (read.ec != std::errc::result_out_of_range) return value;
  std::string_view const whole = text.substr(0, text.find('.'));
  if (whole.find_first_of("123456789") == std::string_view::npos) return 0;
  return text.starts_with('-') ? -HUGE_VAL : HUGE_VAL;
}

int ReadHexString(Value const& value, Output const& output) {
  std::string text = value.bytes;
  text.resize(std::max<size_t>(text.size(), static_cast<size_t>(value.reported)));
  std::string decoded(static_cast<size_t>(value.reported < 2 ? 0 : value.reported / 2 - 1), '\0');
  DecodeHexString(text.data(), value.reported, reinterpret_cast<BYTE*>(decoded.data()));
  return output.Bytes(decoded);
}

int ReadString(Value const& value, Output const& output) {
  // Kept: a string in an object of its own is refused; the title of such a document stays empty.
  if (value.isolated == 0) return 0;
  if (value.text.starts_with('<')) return ReadHexString(value, output);
  if (value.reported < 2) return output.Bytes({});
  std::string inside = value.bytes.substr(std::min<size_t>(value.bytes.size(), 1));
  inside.resize(static_cast<size_t>(value.reported - 2));
  return output.Bytes(inside);
}

int ReadName(Value const& value, Output const& output) {
  char* name = nullptr;
  if (ParseName(value.bytes.c_str(), &name) == 0) return 0;
  return output.Adopt(name, std::strlen(name));
}

int ReadBracketed(Value const& value, Output const& output) {
  char* inside = nullptr;
  uint64_t length = 0;
  uint64_t const extent = std::min<uint64_t>(value.Extent(), value.bytes.size() + 1);
  if (ExtractBracketed(value.bytes.c_str(), extent, '[', &inside, &length) == 0) return 0;
  return output.Adopt(inside, length);
}

int ReadArray(Value const& value, Output const& output) {
  // Kept: a text that mentions /Length is taken for a stream or a dictionary.
  if (value.text.find("/Length") != std::string_view::npos) return 0;
  return ReadBracketed(value, output);
}

int ReadNameOrArray(Value const& value, Output const& output) {
  size_t const first = value.text.find_first_of("[/");
  if (first == std::string_view::npos) return 0;
  return value.text[first] == '[' ? ReadBracketed(value, output) : ReadName(value, output);
}

int ReadInteger(Value const& value, Output const& output) {
  return output.Number(DecimalValue(SignedNumber(TrimFront(value.text))));
}

int ReadReal(Value const& value, Output const& output) {
  return output.Number(RealValue(SignedNumber(TrimFront(value.text), ".")));
}

int ReadBoolean(Value const& value, Output const& output) {
  std::string_view const text = TrimFront(value.text);
  auto const end = std::find_if(text.begin(), text.end(), [](char c) {
    return (c < 'a' || c > 'z') && (c < 'A' || c > 'Z');
  });
  std::string_view const word = text.substr(0, static_cast<size_t>(end - text.begin()));
  if (word != "true" && word != "false") return 0;
  return output.Number(int32_t{word == "true" ? 1 : 0});
}

// Kept: pairs overlap, so that ">>>>" closes two levels one byte early.
int ReadDictionary(Value const& value, Output const& output) {
  std::string_view const text = value.text;
  int64_t depth = 0;
  for (size_t at = 1; at < text.size(); ++at) {
    if (text[at] != text[at - 1] || (text[at] != '<' && text[at] != '>')) continue;
    depth += text[at] == '<' ? 1 : -1;
    if (depth == 0) return output.Bytes(text.substr(0, at + 1));
  }
  return 0;
}

int ReadNumberBehindObj(Value const& value, Output const& output) {
  size_t const keyword = value.text.find("obj");
  if (keyword == std::string_view::npos) return 0;
  return output.Number(DecimalValue(LeadingNumber(TrimFront(value.text.substr(keyword + 3)))));
}

int ReadInnerDictionary(Value const& value, Output const& output) {
  size_t const begin = value.text.find("<<");
  if (begin == std::string_view::npos) return 0;
  int64_t depth = 1;
  for (size_t at = begin + 2; at + 1 < value.text.size(); ++at) {
    std::string_view const pair = value.text.substr(at, 2);
    if (pair != "<<" && pair != ">>") continue;
    depth += pair == "<<" ? 1 : -1;
    ++at;
    if (depth == 0) return output.Bytes(value.text.substr(begin, at + 1 - begin));
  }
  return 0;
}

int ReadFirstDigits(Value const& value, Output const& output) {
  size_t const first = std::min(value.text.find_first_of("0123456789"), value.text.size());
  std::string_view const digits = LeadingNumber(value.text.substr(first));
  return output.Number(DecimalValue(digits.substr(0, kNumberScratch)));
}

int ReadText(Value const& value, Output const& output) { return output.Bytes(value.text); }

int ReadThroughBracket(Value const& value, Output const& output) {
  size_t const end = value.text.find(']');
  return end == std::string_view::npos ? 0 : output.Bytes(value.text.substr(0, end + 1));
}

int ReadRest(ByteView rest, Output const& output) { return output.Bytes(rest.Text()); }

int ReadReference(ByteView rest, Output const& output) {
  std::string_view const text = TrimFront(rest.Chars());
  std::string_view const number = LeadingNumber(text);
  if (number.empty()) return 0;
  std::string_view const generation = LeadingNumber(TrimFront(text.substr(number.size())));
  int32_t const pair[] = {DecimalValue(number), DecimalValue(generation)};
  return output.Number(pair);
}

// A reading of the value text.
struct Reading {
  DWORD type;
  bool refuses_empty;
  int (*read)(Value const&, Output const&);
};

constexpr Reading kReadings[] = {
    {1, false, ReadString},         {2, false, ReadName},
    {4, false, ReadArray},          {6, false, ReadNameOrArray},
    {8, false, ReadInteger},        {16, false, ReadBoolean},
    {32, false, ReadDictionary},    {64, false, ReadReal},
    {257, true, ReadText},          {258, true, ReadText},
    {260, true, ReadText},          {264, true, ReadNumberBehindObj},
    {272, true, ReadText},          {288, true, ReadInnerDictionary},
    {1032, false, ReadFirstDigits}, {1056, false, ReadFirstDigits},
    {2048, true, ReadText},
};

constexpr DWORD kFlatArray = 512;
constexpr DWORD kReference = 1024;
constexpr DWORD kRest = 4096;

int ReadIsolated(ObjectSource* objects, ByteView rest, Reading const& reading,
                 Output const& output) {
  ValueText const value = IsolateValue(objects, rest);
  if (!value.text) return 0;
  std::string_view const text = ViewOf(*value.text).Text();
  if (reading.refuses_empty && text.empty()) return 0;
  return reading.read({*value.text, text, value.size.value_or(0), value.result}, output);
}

// An array without inner brackets, taken from the bytes as they are, or from the value's text.
int ReadFlatArray(ObjectSource* objects, ByteView rest, Output const& output) {
  std::string_view const text = TrimFront(rest.Chars());
  if (text.empty() || text.front() == '<') return 0;
  size_t const end = text.find_first_of("]>");
  if (end == std::string_view::npos) return 0;
  if (text.front() == '[') return output.Bytes(text.substr(0, end + 1));
  return ReadIsolated(objects, rest, {kFlatArray, false, ReadThroughBracket}, output);
}

bool MayFollowKey(BYTE c) {
  return c != 0 &&
         std::string_view("\r\n (/<[").find(static_cast<char>(c)) != std::string_view::npos;
}

// What follows the first match of the key that no longer name continues.
std::optional<ByteView> FindBehindKey(BYTE* data, uint64_t size, std::string_view key) {
  ByteView const buffer{data, size};
  BYTE const* const pattern = reinterpret_cast<BYTE const*>(key.data());
  for (uint64_t at = 0; at < size; ++at) {
    BYTE const* const match = FindBytes(data + at, size - at, pattern, key.size());
    if (match == nullptr) return std::nullopt;
    at = static_cast<uint64_t>(match - data);
    if (MayFollowKey(buffer[at + key.size()])) return buffer.From(at + key.size());
  }
  return std::nullopt;
}

}  // namespace

int GetTypedValue(ObjectSource* objects, BYTE* data, uint64_t size, char const* key, void** out,
                  uint64_t* out_size, DWORD type) {
  if (data == nullptr || key == nullptr || out == nullptr || out_size == nullptr) return 0;
  std::optional<ByteView> const rest = FindBehindKey(data, size, key);
  if (!rest) return 0;
  Output const output(out, out_size);
  if (type == kFlatArray) return ReadFlatArray(objects, *rest, output);
  if (type == kReference) return ReadReference(*rest, output);
  if (type == kRest) return ReadRest(*rest, output);
  for (Reading const& reading : kReadings) {
    if (reading.type == type) return ReadIsolated(objects, *rest, reading, output);
  }
  return 0;
}

int ParseValueText(ObjectSource* objects, BYTE** text, uint64_t size, BYTE** out, DWORD* out_size) {
  if (text == nullptr || *text == nullptr || out == nullptr || out_size == nullptr) return 0;
  ValueText const value = IsolateValue(objects, {*text, size});
  if (value.text) *out = reinterpret_cast<BYTE*>(HeapCopy(*value.text));
  if (value.size) *out_size = *value.size;
  return value.result;
}

}  // namespace sorrelin

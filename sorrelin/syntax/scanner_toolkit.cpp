// The scanner's free functions that serve tools and diagnosis; the reader does not call them.
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/decimal.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/scanner.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace sorrelin {
namespace {

constexpr size_t kHeaderDigits = 14;  // of a number in an object header

// The digits at the start of a text, without the white space before them; they are taken off it.
std::string_view TakeDigits(ByteView& text) {
  ByteView const rest = text.From(SkipWhiteSpace(text, 0));
  uint64_t count = 0;
  while (IsDigitChar(rest[count])) ++count;
  text = rest.From(count);
  return rest.Chars().substr(0, std::min(static_cast<size_t>(count), kHeaderDigits));
}

bool EndsKey(char c) {
  return IsWhiteSpace(static_cast<BYTE>(c)) ||
         std::string_view("<>[]").find(c) != std::string_view::npos;
}

// The nesting at a byte of a dictionary's text.
struct Nesting {
  int64_t angles = 0;
  int64_t brackets = 0;

  void Count(char c) {
    angles += (c == '<') - (c == '>');
    brackets += (c == '[') - (c == ']');
  }
  bool InOuterDictionary() const { return angles == 2 && brackets == 0; }
};

std::string_view KeyAt(std::string_view text, size_t at) {
  size_t end = at;
  while (end < text.size() && !EndsKey(text[end])) ++end;
  return text.substr(at, end - at);
}

std::vector<std::string_view> OuterNames(std::string_view text) {
  std::vector<std::string_view> names;
  Nesting nesting;
  for (size_t at = 0; at < text.size(); ++at) {
    nesting.Count(text[at]);
    if (text[at] == '/' && nesting.InOuterDictionary()) {
      names.push_back(KeyAt(text.substr(0, std::min<size_t>(text.size(), at + kKeySlotBytes)), at));
    }
  }
  return names;
}

}  // namespace

bool IsValueName(BYTE* data, uint64_t size, char const* key) {
  if (data == nullptr || size == 0 || key == nullptr) return false;
  uint64_t const match = FindKey(data, size, key, LastByte::kKept);
  if (match == kNotFound) return false;
  ByteView const buffer{data, size};
  return buffer[SkipWhiteSpace(buffer, match + std::strlen(key))] == '/';
}

bool IsValueReference(BYTE* data, uint64_t size, char const* key) {
  if (data == nullptr || size == 0 || key == nullptr) return false;
  uint64_t const match = FindKey(data, size, key, LastByte::kTerminatedOnMiss);
  return match != kNotFound &&
         HasReferenceShape({data, size}, match + std::strlen(key), IsWhiteSpace);
}

bool IsNumericText(char const* text, uint64_t length) {
  if (text == nullptr || *text == 0) return false;
  std::string_view const whole(text);
  ByteView const chars = ViewOf(length == 0 ? whole : whole.substr(0, static_cast<size_t>(length)));
  // Kept: the first character passes whatever it is; signs are accepted through this.
  for (uint64_t at = SkipWhiteSpace(chars, 0) + 1; at < chars.size; ++at) {
    if (IsWhiteSpace(chars[at])) return true;
    if (!IsDigitChar(chars[at])) return false;
  }
  return true;
}

int ParseObjectHeader(char const* text, DWORD* number, DWORD* generation) {
  if (text == nullptr || number == nullptr || generation == nullptr) return 0;
  ByteView rest = ViewOf(text);
  *number = static_cast<DWORD>(DecimalValue(TakeDigits(rest)));
  *generation = static_cast<DWORD>(DecimalValue(TakeDigits(rest)));
  if (rest.From(SkipWhiteSpace(rest, 0)).Chars().substr(0, 3) == "obj") return 1;
  *number = 0;
  *generation = 0;
  return 0;
}

DWORD ListDictionaryKeys(BYTE const* data, uint64_t size, char** table) {
  if (table == nullptr) return 0;
  *table = nullptr;
  if (data == nullptr || size == 0) return 0;
  std::vector<std::string_view> const names = OuterNames(ByteView{data, size}.Chars());
  if (names.empty()) return 0;
  *table = static_cast<char*>(std::calloc(names.size(), kKeySlotBytes));
  if (*table == nullptr) return 0;
  for (size_t slot = 0; slot < names.size(); ++slot) {
    size_t const bytes = std::min<size_t>(names[slot].size(), kKeySlotBytes - 1);
    std::memcpy(*table + slot * kKeySlotBytes, names[slot].data(), bytes);
  }
  return static_cast<DWORD>(names.size());
}

WCHAR* AnsiToWide(char const* text) {
  if (text == nullptr) return nullptr;
  WideString const wide = ToWide(text);
  auto* const copy = static_cast<WCHAR*>(std::calloc(wide.size() + 1, sizeof(WCHAR)));
  if (copy != nullptr) std::copy(wide.begin(), wide.end(), copy);
  return copy;
}

}  // namespace sorrelin

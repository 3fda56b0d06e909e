// The scanner's free functions that the reader calls.
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/heap_copy.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/number_scan.h>
#include <sorrelin/syntax/scanner.h>

#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace sorrelin {
namespace {

constexpr size_t kNameBytes = 127;

// Where a scan after a key starts; the buffer's start without a key.
uint64_t ScanStart(BYTE* data, uint64_t size, char const* key) {
  return key == nullptr ? 0 : FindKey(data, size, key, LastByte::kTerminatedOnMiss);
}

bool EndsName(std::string_view text, size_t at) {
  char const c = text[at];
  return c == '/' || IsWhiteSpace(static_cast<BYTE>(c)) || text.substr(at, 2) == ">>";
}

// The name at the start of a text, after its slash.
std::string NameBehindSlash(std::string_view text) {
  std::string name;
  size_t at = 0;
  while (at < text.size() && !EndsName(text, at)) {
    if (text[at] == '#' && at + 2 < text.size()) {
      name += static_cast<char>(HexPairToByte(text[at + 1], text[at + 2]));
      at += 3;
    } else {
      name += text[at++];
    }
  }
  return name;
}

char ClosingOf(char opening) {
  switch (opening) {
    case '<':
      return '>';
    case '[':
      return ']';
    default:
      return ')';
  }
}

// Position of the last closing character after `begin`, or nothing.
std::optional<size_t> FindClosing(std::string_view text, size_t begin, char closing) {
  for (size_t at = text.size() - 1; at > begin; --at) {
    if (text[at] == closing && text[at - 1] != '\\') return at;
  }
  return std::nullopt;
}

}  // namespace

bool BufferContains(BYTE const* data, uint64_t size, char const* key) {
  if (data == nullptr || size == 0 || key == nullptr) return false;
  return ByteView{data, size}.Text().find(key) != std::string_view::npos;
}

int GetIntPairAfterKey(BYTE* data, uint64_t size, char const* key, DWORD* first, DWORD* second) {
  if (data == nullptr || size == 0 || first == nullptr || second == nullptr) return 0;
  uint64_t const start = ScanStart(data, size, key);
  if (start == kNotFound) return 0;
  return ReadPair(NumberScan({data, size}, start, kXrefPairRule), first, second);
}

int GetIntAfterKey(BYTE* data, uint64_t size, char const* key, DWORD* value) {
  if (data == nullptr || size == 0 || key == nullptr || value == nullptr) return 0;
  uint64_t const start = ScanStart(data, size, key);
  if (start == kNotFound) return 0;
  return ReadSingle(NumberScan({data, size}, start, kXrefSingleRule), value);
}

int GetNumericArray(BYTE* data, DWORD size, char const* key, DWORD* values, DWORD count) {
  if (data == nullptr || size == 0 || values == nullptr || count == 0) return 0;
  uint64_t const start = key == nullptr ? 0 : FindDelimitedName(data, size, key);
  if (start == kNotFound) return 0;
  NumberScan scan({data, size}, start, kArrayRule);
  DWORD read = 0;
  while (scan.Next() == NumberScan::Event::kNumber) {
    values[read++] = scan.value();
    if (read == count) return 1;
    // Kept: a closing bracket that touches nothing ends the array only after one more number, which
    // fills the next slot; boxes with a blank before the bracket are read this way.
    if (scan.array_closed()) return read + 1 == count ? 1 : 0;
  }
  return 0;
}

int ParseName(char const* text, char** name) {
  if (text == nullptr || name == nullptr) return 0;
  char const* const slash = std::strchr(text, '/');
  if (slash == nullptr) return 0;
  std::string found = NameBehindSlash(slash + 1);
  found.insert(found.begin(), '/');
  if (found.size() > kNameBytes) return 0;
  *name = HeapCopy(found);
  return 1;
}

int ExtractBracketed(char const* text, uint64_t size, char opening, char** out, uint64_t* length) {
  if (text == nullptr || size == 0 || out == nullptr || length == nullptr) return 0;
  std::string_view const chars(text, static_cast<size_t>(size));
  size_t const begin = chars.find(opening);
  if (begin == std::string_view::npos) return 0;
  std::optional<size_t> const end = FindClosing(chars, begin, ClosingOf(opening));
  if (!end || *end == begin + 1) return 0;
  std::string_view const inside = chars.substr(begin + 1, *end - begin - 1);
  *out = HeapCopy(inside);
  *length = inside.size();
  return 1;
}

bool IsAllDigits(char const* text) {
  if (text == nullptr || *text == 0) return false;
  return std::string_view(text).find_first_not_of(kDigits) == std::string_view::npos;
}

int HexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

BYTE HexPairToByte(char first, char second) {
  int const high = HexDigitValue(first);
  int const low = HexDigitValue(second);
  return high < 0 || low < 0 ? BYTE{0} : static_cast<BYTE>(16 * high + low);
}

void DecodeHexString(char const* text, uint64_t length, BYTE* out) {
  if (text == nullptr || out == nullptr) return;
  for (uint64_t k = 0; k + 1 < length / 2; ++k) {
    // Kept: a character that is no digit counts as -1, without a report; odd strings still read.
    out[k] =
        static_cast<BYTE>(16 * HexDigitValue(text[2 * k + 1]) + HexDigitValue(text[2 * k + 2]));
  }
}

BYTE* FindBytes(BYTE* data, uint64_t size, BYTE const* pattern, uint64_t pattern_size) {
  if (data == nullptr || size == 0 || pattern == nullptr || pattern_size == 0) return nullptr;
  size_t const at = ByteView{data, size}.Chars().find(ByteView{pattern, pattern_size}.Chars());
  return at == std::string_view::npos ? nullptr : data + at;
}

}  // namespace sorrelin

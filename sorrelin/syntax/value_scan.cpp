// Values after a key text in an object's bytes.
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/number_scan.h>
#include <sorrelin/syntax/scanner.h>
#include <sorrelin/syntax/value_scan.h>

#include <cstring>

namespace sorrelin {
namespace {

ByteView View(std::span<BYTE const> text) { return {text.data(), text.size()}; }

uint64_t FindTerminated(std::span<BYTE> text, char const* key) {
  return FindKey(text.data(), text.size(), key, LastByte::kTerminatedOnMiss);
}

// Offset of the separator after the first name. A NUL before it, which may be the one after
// the text, gives kNotFound.
uint64_t FindFirstNameEnd(std::span<BYTE> text) {
  uint64_t at = FindTerminated(text, "/");
  if (at == kNotFound) return kNotFound;
  ByteView const bytes = View(text);
  while (!IsSeparator(bytes[at])) {
    if (bytes[at++] == 0) return kNotFound;
  }
  return at;
}

// The first alphanumeric token after the first separator from `match` on. As many bytes as the
// text has are looked at, counted from the match.
// Kept: a byte that belongs to no token hides itself, the next byte and all that touches them, so
// names are passed over; the object type test gives one answer for every object through this.
std::string_view TokenAfter(ByteView bytes, uint64_t match) {
  uint64_t passed = 0;
  while (passed < bytes.size && !IsSeparator(bytes[match + passed])) ++passed;
  bool armed = true;
  std::optional<uint64_t> start;
  for (++passed; passed < bytes.size; ++passed) {
    uint64_t const at = match + passed;
    if (IsAlphanumeric(bytes[at])) {
      if (!start && armed) start = at;
      armed = false;
      continue;
    }
    if (start)
      return bytes.Chars().substr(static_cast<size_t>(*start), static_cast<size_t>(at - *start));
    armed = IsSeparator(bytes[at]);
    if (!armed) ++passed;
  }
  return {};
}

// Position of the byte that ends the value at `at`, or kNotFound.
// Kept: pairs of angle brackets overlap ("<<<" counts twice), and only a depth of exactly 0 ends a
// value; what an update writes back of /ID and /Encrypt is cut by these rules.
uint64_t FindValueEnd(ByteView bytes, uint64_t at) {
  int64_t angles = 0;
  int64_t brackets = 0;
  for (; at < bytes.size; ++at) {
    BYTE const c = bytes[at];
    bool const ends = c == '/' || c == 0 || IsSeparator(c);
    if (ends && angles == 0 && brackets == 0) return at;
    if (c == '<' && bytes[at + 1] == '<') ++angles;
    if (c == '>' && bytes[at + 1] == '>') --angles;
    if (c == '[') ++brackets;
    if (c == ']') --brackets;
  }
  return kNotFound;
}

}  // namespace

bool FindPair(std::span<BYTE> text, char const* key, DWORD* first, DWORD* second) {
  uint64_t const match = key == nullptr ? 0 : FindTerminated(text, key);
  if (match == kNotFound) return false;
  return ReadPair(NumberScan(View(text), match, kPairRule), first, second) != 0;
}

bool FindNumber(std::span<BYTE> text, char const* key, DWORD* value) {
  uint64_t const match = FindTerminated(text, key);
  if (match == kNotFound) return false;
  return ReadSingle(NumberScan(View(text), match, kSingleRule), value) != 0;
}

bool FindPairAfterName(std::span<BYTE> text, DWORD* first, DWORD* second) {
  uint64_t const start = FindFirstNameEnd(text);
  if (start == kNotFound) return false;
  return ReadPair(NumberScan(View(text), start, kPairRule), first, second) != 0;
}

bool FindArrayPair(std::span<BYTE> text, char const* key, DWORD* first, DWORD* second) {
  uint64_t const match = key == nullptr ? 0 : FindDelimitedName(text.data(), text.size(), key);
  if (match == kNotFound) return false;
  return ReadPair(NumberScan(View(text), match, kArrayPairRule), first, second) != 0;
}

bool IsReferenceAfter(std::span<BYTE> text, char const* key) {
  uint64_t const match = FindTerminated(text, key);
  if (match == kNotFound) return false;
  return HasReferenceShape(View(text), match + std::strlen(key),
                           [](BYTE c) { return IsSeparator(c); });
}

std::optional<bool> IsDictionaryAfter(std::span<BYTE const> text, char const* key) {
  ByteView const bytes = View(text);
  uint64_t at = key == nullptr ? 0 : FindBehindName(bytes, key);
  if (at == kNotFound) return std::nullopt;
  while (IsSeparator(bytes[at])) ++at;
  return bytes[at] == '<' && bytes[at + 1] == '<';
}

std::optional<std::string_view> FindToken(std::span<BYTE> text, char const* key) {
  uint64_t const match = FindTerminated(text, key);
  if (match == kNotFound) return std::nullopt;
  return TokenAfter(View(text), match);
}

std::optional<std::string_view> FindKeyWithValue(std::span<BYTE> text, char const* key) {
  uint64_t const match = FindKey(text.data(), text.size(), key, LastByte::kKept);
  if (match == kNotFound) return std::nullopt;
  ByteView const bytes = View(text);
  uint64_t value = match + std::strlen(key);
  // Kept: a "[" directly after the key is passed as a separator and not counted, its "]" is.
  while (IsSeparator(bytes[value])) ++value;
  uint64_t const end = FindValueEnd(bytes, value);
  if (end == kNotFound) return std::string_view();
  return bytes.Chars().substr(static_cast<size_t>(match), static_cast<size_t>(end - match));
}

}  // namespace sorrelin

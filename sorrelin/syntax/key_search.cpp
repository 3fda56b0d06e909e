// The key searches of the scanner.
#include <sorrelin/syntax/key_search.h>

#include <string>

namespace sorrelin {
namespace {

// Bytes of a name that take part in a search, its slash included.
constexpr size_t kNameBytes = 128;

std::string WithSlash(char const* key) {
  std::string name = std::string("/") + key;
  if (name.size() > kNameBytes) name.resize(kNameBytes);
  return name;
}

ByteView WithoutLastByte(BYTE const* data, uint64_t size) { return {data, size - 1}; }

uint64_t SkipDigits(ByteView buffer, uint64_t at) {
  while (IsDigitChar(buffer[at])) ++at;
  return at;
}

uint64_t SkipBlanks(ByteView buffer, uint64_t at, bool (*is_blank)(BYTE)) {
  while (is_blank(buffer[at])) ++at;
  return at;
}

}  // namespace

uint64_t SkipWhiteSpace(ByteView text, uint64_t at) { return SkipBlanks(text, at, IsWhiteSpace); }

uint64_t FindKey(BYTE* data, uint64_t size, char const* key, LastByte last_byte) {
  size_t const match = WithoutLastByte(data, size).Text().find(key);
  if (match != std::string_view::npos) return match;
  // Kept: a failed search cuts the buffer; callers that search it again see the NUL.
  if (last_byte == LastByte::kTerminatedOnMiss) data[size - 1] = 0;
  return kNotFound;
}

uint64_t FindDelimitedName(BYTE* data, uint64_t size, char const* key) {
  std::string const name = WithSlash(key);
  std::string_view const text = WithoutLastByte(data, size).Text();
  for (size_t at = text.find(name); at != std::string_view::npos;
       at = text.find(name, at + name.size())) {
    if (IsSeparator(ViewOf(text)[at + name.size()])) return at;
  }
  data[size - 1] = 0;
  return kNotFound;
}

uint64_t FindBehindName(ByteView buffer, char const* key) {
  std::string const name = WithSlash(key);
  size_t const at = buffer.Text().find(name);
  return at == std::string_view::npos ? kNotFound : at + name.size();
}

bool HasReferenceShape(ByteView buffer, uint64_t at, bool (*is_blank)(BYTE)) {
  at = SkipBlanks(buffer, at, is_blank);
  at = SkipBlanks(buffer, SkipDigits(buffer, at), is_blank);
  at = SkipBlanks(buffer, SkipDigits(buffer, at), is_blank);
  return buffer[at] == 'R';
}

}  // namespace sorrelin

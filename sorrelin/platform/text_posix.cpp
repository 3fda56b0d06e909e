// Conversion between UTF-8 and UTF-16 on POSIX.
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/posix_support.h>
#include <sorrelin/platform/text.h>
#include <utf8.h>

#include <climits>
#include <cstring>

namespace sorrelin {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

// Windows-1252 for 0x80 to 0x9F, the five bytes without a character as the C1 control of the same
// number (unicode.org, MAPPINGS/VENDORS/MICSFT/WindowsBestFit/bestfit1252.txt). From 0xA0 on the
// code page is Latin-1.
constexpr char16_t kWindows1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// What a byte becomes that is not part of valid UTF-8, which is always one from 0x80 on.
char16_t LoneByte(UINT code_page, char byte) {
  auto const value = static_cast<unsigned char>(byte);
  if (code_page == CP_UTF8) return kReplacement;
  return value < 0xA0 ? kWindows1252[value - 0x80] : char16_t{value};
}

// Counts units and stores those that fit the buffer; capacity 0 only counts.
template <typename Unit>
class Output {
 public:
  Output(Unit* buffer, int capacity) : buffer_(buffer), capacity_(static_cast<size_t>(capacity)) {}

  // A character is stored whole or not at all, and nothing after the first that does not fit.
  void Add(Unit const* units, size_t count) {
    count_ += count;
    if (count_ <= capacity_) std::memcpy(buffer_ + count_ - count, units, count * sizeof(Unit));
  }

  // The result of the conversion.
  int Finish() const {
    if (count_ > INT_MAX) return Fail(ERROR_INVALID_PARAMETER, 0);
    if (capacity_ > 0 && count_ > capacity_) return Fail(ERROR_INSUFFICIENT_BUFFER, 0);
    return static_cast<int>(count_);
  }

 private:
  Unit* buffer_;
  size_t capacity_;
  size_t count_ = 0;
};

void AddWide(uint32_t character, Output<WCHAR>& output) {
  if (character < 0x10000) {
    auto const unit = static_cast<WCHAR>(character);
    output.Add(&unit, 1);
    return;
  }
  uint32_t const rest = character - 0x10000;
  WCHAR const pair[2] = {static_cast<WCHAR>(0xD800 | rest >> 10),
                         static_cast<WCHAR>(0xDC00 | (rest & 0x3FF))};
  output.Add(pair, 2);
}

void AddNarrow(uint32_t character, Output<char>& output) {
  char bytes[4];
  char const* const end = utf8::unchecked::append(character, bytes);
  output.Add(bytes, static_cast<size_t>(end - bytes));
}

bool IsLead(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool IsTrail(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }
bool IsSurrogate(char16_t unit) { return (unit & 0xF800) == 0xD800; }

// Calls add(character) for each character, a lone surrogate being one of its own.
template <typename Add>
void ForEachCharacter(std::u16string_view text, Add add) {
  for (size_t i = 0; i < text.size(); ++i) {
    if (IsLead(text[i]) && i + 1 < text.size() && IsTrail(text[i + 1])) {
      uint32_t const high = text[i] & 0x3FFu;
      uint32_t const low = text[++i] & 0x3FFu;
      add(0x10000 + (high << 10 | low));
    } else {
      add(uint32_t{text[i]});
    }
  }
}

bool IsLoneSurrogate(uint32_t character) {
  return character < 0x10000 && IsSurrogate(static_cast<char16_t>(character));
}

// The text that a conversion reads, never empty; nothing, with error 87, if its arguments are
// refused.
template <typename Unit, typename Target>
std::optional<std::basic_string_view<Unit>> Source(UINT code_page, Unit const* text, int length,
                                                   Target const* buffer, int capacity) {
  using View = std::basic_string_view<Unit>;
  bool const known = code_page == CP_ACP || code_page == CP_UTF8;
  bool const room = capacity == 0 || (capacity > 0 && buffer != nullptr);
  if (!known || !room || text == nullptr || length == 0) {
    return Fail(ERROR_INVALID_PARAMETER, std::optional<View>());
  }
  if (length > 0) return View(text, static_cast<size_t>(length));
  return View(text, std::char_traits<Unit>::length(text) + 1);
}

}  // namespace

std::optional<std::string> Utf8Path(std::u16string_view name) {
  std::string path;
  bool valid = true;
  ForEachCharacter(name, [&](uint32_t character) {
    if (IsLoneSurrogate(character)) valid = false;
    if (valid) utf8::unchecked::append(character, std::back_inserter(path));
  });
  return valid ? std::optional(path) : std::nullopt;
}

std::optional<std::u16string> WidePath(std::string_view path) {
  if (!utf8::is_valid(path.begin(), path.end())) return std::nullopt;
  std::u16string name;
  utf8::unchecked::utf8to16(path.begin(), path.end(), std::back_inserter(name));
  return name;
}

}  // namespace sorrelin

int MultiByteToWideChar(UINT code_page, DWORD, char const* text, int length, WCHAR* buffer,
                        int capacity) {
  auto const source = sorrelin::Source(code_page, text, length, buffer, capacity);
  if (!source) return 0;
  sorrelin::Output<WCHAR> output(buffer, capacity);
  char const* at = source->data();
  char const* const end = at + source->size();
  while (at != end) {
    char const* const valid_end = utf8::find_invalid(at, end);
    while (at != valid_end) sorrelin::AddWide(utf8::unchecked::next(at), output);
    if (at != end) sorrelin::AddWide(sorrelin::LoneByte(code_page, *at++), output);
  }
  return output.Finish();
}

int WideCharToMultiByte(UINT code_page, DWORD, WCHAR const* text, int length, char* buffer,
                        int capacity, char const* default_char, BOOL* used_default) {
  if (default_char != nullptr || used_default != nullptr) {
    return sorrelin::Fail(ERROR_INVALID_PARAMETER, 0);
  }
  auto const source = sorrelin::Source(code_page, text, length, buffer, capacity);
  if (!source) return 0;
  sorrelin::Output<char> output(buffer, capacity);
  sorrelin::ForEachCharacter(*source, [&](uint32_t character) {
    bool const lone = sorrelin::IsLoneSurrogate(character);
    sorrelin::AddNarrow(lone ? uint32_t{sorrelin::kReplacement} : character, output);
  });
  return output.Finish();
}

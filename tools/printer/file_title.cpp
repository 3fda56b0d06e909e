// Characters are judged by their code points, and the name is cut between two of them.
#include "tools/printer/file_title.h"

#include <utf8.h>

#include <iterator>

namespace sorrelin::tool {
namespace {

constexpr size_t kMostBytes = 240;
constexpr char32_t kReplacement = '_';
constexpr std::string_view kEnding = ".pdf";
constexpr std::string_view kEdges = ". ";

// Controls, and the marks that change the direction of the text around them.
bool IsHidden(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x200E || c == 0x200F ||
         (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

std::string SafeCharacters(std::string_view title) {
  std::string valid;
  utf8::replace_invalid(title.begin(), title.end(), std::back_inserter(valid), kReplacement);
  std::string safe;
  for (auto at = valid.begin(); at != valid.end();) {
    char32_t const c = utf8::next(at, valid.end());
    utf8::append(c == '/' || IsHidden(c) ? kReplacement : c, std::back_inserter(safe));
  }
  return safe;
}

std::string_view WithoutEdges(std::string_view text) {
  size_t const begin = text.find_first_not_of(kEdges);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kEdges) - begin + 1);
}

bool IsEnding(std::string_view text) {
  if (text.size() != kEnding.size()) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    char const c = text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + 32) : text[i];
    if (c != kEnding[i]) return false;
  }
  return true;
}

std::string_view WithoutEnding(std::string_view text) {
  bool const has =
      text.size() > kEnding.size() && IsEnding(text.substr(text.size() - kEnding.size()));
  return has ? text.substr(0, text.size() - kEnding.size()) : text;
}

// The text up to the last character that ends within the limit.
std::string_view Cut(std::string_view text) {
  constexpr unsigned kContinuation = 0x80, kContinuationMask = 0xC0;
  if (text.size() <= kMostBytes) return text;
  size_t end = kMostBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & kContinuationMask) == kContinuation)
    --end;
  return text.substr(0, end);
}

}  // namespace

std::string FileTitle(std::string_view title, std::string_view fallback) {
  std::string const safe = SafeCharacters(title);
  std::string_view const name = WithoutEdges(Cut(WithoutEdges(WithoutEnding(WithoutEdges(safe)))));
  return std::string(name.empty() ? fallback : name);
}

std::string NumberedName(std::string const& file_title, int number) {
  std::string name = file_title;
  if (number > 1) name += " (" + std::to_string(number) + ")";
  return name.append(kEnding);
}

}  // namespace sorrelin::tool

// Parsers for lists of pages and patterns of names.
#include "tools/documents/page_selection.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

namespace sorrelin::tool {
namespace {

// A number above 0 that takes the whole text.
std::optional<DWORD> NumberOf(std::string_view text) {
  DWORD value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  bool const whole = error == std::errc{} && end == text.data() + text.size();
  return whole && value > 0 ? std::optional<DWORD>(value) : std::nullopt;
}

}  // namespace

std::optional<PageSelection> PageSelection::Parse(std::string_view text) {
  PageSelection selection;
  for (bool more = true; more;) {
    size_t const comma = text.find(',');
    std::string_view const part = text.substr(0, comma);
    more = comma != text.npos;
    if (more) text.remove_prefix(comma + 1);
    size_t const dash = part.find('-');
    auto const first = NumberOf(part.substr(0, dash));
    if (!first) return std::nullopt;
    std::optional<DWORD> last = first;
    if (dash != part.npos) {
      last = NumberOf(part.substr(dash + 1));
      bool const open = dash + 1 == part.size();
      if ((!last && !open) || (last && *last < *first)) return std::nullopt;
    }
    selection.ranges_.push_back({*first, last});
  }
  return selection;
}

std::vector<DWORD> PageSelection::Of(DWORD count) const {
  std::vector<DWORD> pages;
  std::vector<bool> taken(count);
  auto const take = [&](DWORD first, DWORD last) {
    for (DWORD page = first; page <= std::min(last, count); ++page) {
      if (!taken[page - 1]) pages.push_back(page - 1);
      taken[page - 1] = true;
    }
  };
  for (Range const& range : ranges_) take(range.first, range.last.value_or(count));
  if (ranges_.empty()) take(1, count);
  return pages;
}

bool PageSelection::GoesBeyond(DWORD count) const {
  return std::any_of(ranges_.begin(), ranges_.end(),
                     [&](Range const& range) { return range.last.value_or(range.first) > count; });
}

std::optional<NamePattern> NamePattern::Parse(std::string_view text) {
  NamePattern pattern;
  Part part;
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      part.text += text[at];
      continue;
    }
    size_t end = at + 1;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    std::string_view const width = text.substr(at + 1, end - at - 1);
    if (end == text.size() || width.size() > 2) return std::nullopt;
    at = end;
    if (text[end] == '%' && width.empty()) {
      part.text += '%';
      continue;
    }
    part.number = text[end];
    if (part.number == 'd') ++pattern.pages_;
    if (part.number == 'i') ++pattern.pictures_;
    if (part.number != 'd' && part.number != 'i') return std::nullopt;
    if (auto const digits = NumberOf(width)) part.digits = *digits;
    pattern.parts_.push_back(std::exchange(part, Part{}));
  }
  pattern.parts_.push_back(std::move(part));
  if (pattern.pages_ > 1 || pattern.pictures_ > 1) return std::nullopt;
  return pattern;
}

std::string NamePattern::NameOf(DWORD page, DWORD picture) const {
  std::string name;
  for (Part const& part : parts_) {
    name += part.text;
    if (part.number == '\0') continue;
    std::string const number = std::to_string(part.number == 'd' ? page : picture);
    if (part.digits > number.size()) name.append(part.digits - number.size(), '0');
    name += number;
  }
  return name;
}

std::string PatternOf(std::string_view text) {
  std::string pattern;
  for (char const c : text) pattern += c == '%' ? "%%" : std::string(1, c);
  return pattern;
}

}  // namespace sorrelin::tool

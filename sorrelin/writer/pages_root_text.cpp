// The text of a pages root with further pages in it.
#include <sorrelin/writer/pages_root_text.h>

#include <algorithm>

namespace sorrelin {

namespace {

constexpr char kDigits[] = "0123456789";

// Kept: a blank before and a CR after each entry, whatever the session's line end.
std::string Entries(std::vector<DWORD> const& pages) {
  std::string entries;
  for (DWORD const page : pages) {
    entries += ' ';
    entries += std::to_string(static_cast<int32_t>(page));
    entries += " 0 R\r";
  }
  return entries;
}

// The place of the old count in the body.
struct CountDigits {
  size_t begin;
  size_t end;
};

CountDigits DigitsFrom(std::string const& body, size_t at) {
  size_t const begin = std::min(body.find_first_of(kDigits, at), body.size());
  return {begin, std::min(body.find_first_not_of(kDigits, begin), body.size())};
}

// What follows "obj"; empty without it.
std::string BodyOf(std::string const& old_text) {
  std::string const text = old_text.substr(0, old_text.find('\0'));
  size_t const header = text.find("obj");
  return header != std::string::npos ? text.substr(header + 3) : std::string();
}

}  // namespace

bool HasPagesKeys(std::string const& old_text) {
  std::string const body = BodyOf(old_text);
  return body.find("/Count") != std::string::npos && body.find("/Kids") != std::string::npos;
}

// Kept: with /Count before /Kids the bracket is the first one of the body, even that of an array
// before /Kids.
std::optional<std::string> PagesRootWithPages(std::string const& old_text, DWORD count,
                                              std::vector<DWORD> const& pages) {
  if (!HasPagesKeys(old_text)) return std::nullopt;
  std::string const body = BodyOf(old_text);
  size_t const count_at = body.find("/Count");
  size_t const kids_at = body.find("/Kids");
  bool const kids_first = kids_at < count_at;
  size_t const bracket = body.find(']', kids_first ? kids_at : 0);
  CountDigits const digits = DigitsFrom(body, count_at);
  if (bracket == std::string::npos) return std::nullopt;
  if (kids_first ? bracket > digits.begin : bracket < digits.end) return std::nullopt;
  std::string const number = std::to_string(static_cast<int32_t>(count));
  std::string result = body;
  // The later place first, so that the earlier one keeps its offset.
  if (kids_first) {
    result.replace(digits.begin, digits.end - digits.begin, number);
    result.insert(bracket, Entries(pages));
  } else {
    result.insert(bracket, Entries(pages));
    result.replace(digits.begin, digits.end - digits.begin, number);
  }
  return result;
}

}  // namespace sorrelin

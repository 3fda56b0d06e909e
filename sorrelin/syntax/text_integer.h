// Decimal integers at the front of a text, by the rules of scanf.
#ifndef SORRELIN_SYNTAX_TEXT_INTEGER_H_
#define SORRELIN_SYNTAX_TEXT_INTEGER_H_

#include <sorrelin/syntax/decimal.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace sorrelin {

// CR, LF, blank, tab, vertical tab and form feed.
constexpr bool IsScanSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr std::string_view SkipScanSpace(std::string_view text) {
  while (!text.empty() && IsScanSpace(text.front())) text.remove_prefix(1);
  return text;
}

constexpr bool IsDecimalDigit(char c) { return c >= '0' && c <= '9'; }

// Takes white space, a sign and digits off the text. Nothing, with the text unchanged, if there is
// no digit. A number beyond 32 bits is the nearest bound.
constexpr std::optional<int32_t> TakeInteger(std::string_view& text) {
  std::string_view const number = SkipScanSpace(text);
  size_t at = !number.empty() && (number[0] == '-' || number[0] == '+') ? 1 : 0;
  size_t const digits = at;
  while (at < number.size() && IsDecimalDigit(number[at])) ++at;
  if (at == digits) return std::nullopt;
  text = number.substr(at);
  return DecimalValue(number.substr(0, at));
}

// The first run of digits anywhere in the text.
constexpr std::optional<int32_t> FirstInteger(std::string_view text) {
  size_t const at = text.find_first_of("0123456789");
  if (at == std::string_view::npos) return std::nullopt;
  text.remove_prefix(at);
  return TakeInteger(text);
}

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_TEXT_INTEGER_H_

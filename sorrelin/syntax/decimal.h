// Decimal text to a signed 32-bit integer, by the rule of atoi.
#ifndef SORRELIN_SYNTAX_DECIMAL_H_
#define SORRELIN_SYNTAX_DECIMAL_H_

#include <cstdint>
#include <limits>
#include <string_view>

namespace sorrelin {

// Leading white space, a sign and digits up to the first other character; 0 without digits. A
// number beyond 32 bits is the nearest bound.
constexpr int32_t DecimalValue(std::string_view text) {
  size_t at = 0;
  while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r'))) ++at;
  bool const negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  constexpr int64_t kMax = std::numeric_limits<int32_t>::max();
  int64_t const bound = negative ? kMax + 1 : kMax;
  int64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    value = value * 10 + (text[at] - '0');
    if (value > bound) value = bound;
  }
  return static_cast<int32_t>(negative ? -value : value);
}

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_DECIMAL_H_

// The classes of bytes that the scanner goes by.
#ifndef SORRELIN_SYNTAX_CHAR_CLASS_H_
#define SORRELIN_SYNTAX_CHAR_CLASS_H_

#include <sorrelin/platform/types.h>

#include <string_view>

namespace sorrelin {

constexpr bool IsWhiteSpace(BYTE c) { return c == '\n' || c == '\r' || c == ' '; }

// Also NUL and tab.
constexpr bool IsPdfWhiteSpace(BYTE c) { return c == 0 || c == '\t' || IsWhiteSpace(c); }

constexpr bool IsDigitChar(BYTE c) { return c >= '0' && c <= '9'; }

// A digit, "-" or ".".
constexpr bool IsNumberChar(BYTE c) { return IsDigitChar(c) || c == '-' || c == '.'; }

// White space, one of /[]()<>, or NUL.
constexpr bool IsDelimiterChar(BYTE c) {
  return IsWhiteSpace(c) || c == 0 ||
         std::string_view("/[]()<>").find(static_cast<char>(c)) != std::string_view::npos;
}

// CR, LF, space, "[": what separates numbers and tokens. Tab and NUL do not.
constexpr bool IsSeparator(BYTE c) { return c == '\r' || c == '\n' || c == ' ' || c == '['; }

constexpr bool IsAlphanumeric(BYTE c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_CHAR_CLASS_H_

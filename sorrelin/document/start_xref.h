// The number after "startxref".
#ifndef SORRELIN_DOCUMENT_START_XREF_H_
#define SORRELIN_DOCUMENT_START_XREF_H_

#include <cstdint>
#include <optional>
#include <string_view>

namespace sorrelin {

inline constexpr std::string_view kStartXref = "startxref";

// The first run of digits after the first "startxref" of the text, or nothing.
std::optional<int32_t> NumberAfterStartXref(std::string_view text);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_START_XREF_H_

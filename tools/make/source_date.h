// The timestamp of reproducible builds (SOURCE_DATE_EPOCH).
#ifndef TOOLS_MAKE_SOURCE_DATE_H_
#define TOOLS_MAKE_SOURCE_DATE_H_

#include <sorrelin/platform/process.h>

#include <optional>
#include <string_view>

namespace sorrelin::tool {

// The last second that a document can tell, that of the year 9999.
inline constexpr long long kLastSecond = 253402300799;

// The time in UTC of a number of seconds since 1970, or nullopt if the text is no such number.
std::optional<SYSTEMTIME> TimeOfEpoch(std::string_view seconds);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_SOURCE_DATE_H_

// Typed dictionary values as values, for the readers of cross-reference and object streams.
#ifndef SORRELIN_SYNTAX_TYPED_LOOKUP_H_
#define SORRELIN_SYNTAX_TYPED_LOOKUP_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace sorrelin {

class ObjectSource;

// Types of a value, as GetTypedValue numbers them.
inline constexpr DWORD kTypeString = 1;
inline constexpr DWORD kTypeName = 2;
inline constexpr DWORD kTypeArray = 4;  // the text between the brackets
inline constexpr DWORD kTypeInteger = 8;
inline constexpr DWORD kTypeBoolean = 16;
inline constexpr DWORD kTypeDictionary = 32;  // the text with its brackets

// The value of `key` (with its slash) as text, or nothing.
std::optional<std::string> FindTypedText(ObjectSource* objects, std::span<BYTE> text,
                                         char const* key, DWORD type);

// The value of `key` as an integer or a boolean, or nothing.
std::optional<int32_t> FindTypedNumber(ObjectSource* objects, std::span<BYTE> text, char const* key,
                                       DWORD type);

// The names of /Filter, each from its slash up to the next one; none without the key.
std::vector<std::string> FindFilterNames(ObjectSource* objects, std::span<BYTE> text);

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_TYPED_LOOKUP_H_

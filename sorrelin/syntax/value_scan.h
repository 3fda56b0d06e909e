// Values after a key text in an object's bytes: numbers, references, tokens and value texts.
//
// A key is text that is found wherever it is, see key_search.h. Each text has at least one
// byte. A search that fails leaves a NUL in the last byte where that is said to be so by
// "terminates"; what follows a key that is found changes nothing.
#ifndef SORRELIN_SYNTAX_VALUE_SCAN_H_
#define SORRELIN_SYNTAX_VALUE_SCAN_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/key_search.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace sorrelin {

// Whether the key's text is anywhere; the last byte takes no part.
inline bool HoldsKey(std::span<BYTE> text, char const* key) {
  return FindKey(text.data(), text.size(), key, LastByte::kKept) != kNotFound;
}

// The two numbers, or the one number, after a key. Terminate. The first of two is stored even if
// there is no second. A null key of a pair scans from the text's start. Numbers of 100 digits and
// more end the process.
bool FindPair(std::span<BYTE> text, char const* key, DWORD* first, DWORD* second);
bool FindNumber(std::span<BYTE> text, char const* key, DWORD* value);
// The two numbers after the first name. Terminates without a "/".
bool FindPairAfterName(std::span<BYTE> text, DWORD* first, DWORD* second);
// The first two numbers of the array after "/" and the key; null: from the text's start.
// Terminates.
bool FindArrayPair(std::span<BYTE> text, char const* key, DWORD* first, DWORD* second);

// Whether a reference follows the key. Terminates.
bool IsReferenceAfter(std::span<BYTE> text, char const* key);
// Whether "<<" follows "/" and the key (null: begins the text); nothing without the key. The last
// byte takes part.
std::optional<bool> IsDictionaryAfter(std::span<BYTE const> text, char const* key);

// The alphanumeric token after the key, empty if there is none; nothing without the key.
// Terminates.
std::optional<std::string_view> FindToken(std::span<BYTE> text, char const* key);

// The text from the key through the end of its value, empty if the value does not end; nothing
// without the key.
std::optional<std::string_view> FindKeyWithValue(std::span<BYTE> text, char const* key);

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_VALUE_SCAN_H_

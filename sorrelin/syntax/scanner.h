// Searches over the raw bytes of an object: the free functions beside the scanner
// methods of the session. They set no error. A missing argument, or a key that is not found, gives
// 0. Buffers are writable: where nothing is found, some searches leave a NUL in the last byte,
// which never is part of a match of theirs.
#ifndef SORRELIN_SYNTAX_SCANNER_H_
#define SORRELIN_SYNTAX_SCANNER_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/char_class.h>

#include <cstdint>

namespace sorrelin {

// Whether the key text occurs; the search ends at the first NUL, and the last byte takes part.
bool BufferContains(BYTE const* data, uint64_t size, char const* key);

// Two, or one, decimal numbers after a key; the pair's key may be null: from the buffer's start.
// A failed search leaves a NUL in the last byte. 1 or 0.
int GetIntPairAfterKey(BYTE* data, uint64_t size, char const* key, DWORD* first, DWORD* second);
int GetIntAfterKey(BYTE* data, uint64_t size, char const* key, DWORD* value);

// Up to `count` numbers of an array after the key (without slash; null: from the buffer's start).
// 1 if at least count - 1 were read; a slot that has no number stays as it was. Else 0.
int GetNumericArray(BYTE* data, DWORD size, char const* key, DWORD* values, DWORD count);

// The first name in a zero-terminated text, with its slash and with #XX resolved, in a new block
// (free()). 0 for no name, or one of more than 127 bytes.
int ParseName(char const* text, char** name);

// The text between the first opening character and the last closing one that no backslash precedes,
// in a new block (free()) with a NUL after. 0 if there is none or it is empty.
int ExtractBracketed(char const* text, uint64_t size, char opening, char** out, uint64_t* length);

bool IsAllDigits(char const* text);  // false for an empty text

// 0 if either is no hexadecimal digit.
BYTE HexPairToByte(char first, char second);
int HexDigitValue(char c);  // 0 to 15, or -1

// Decodes a hexadecimal string of `length` characters, its brackets included, into length / 2 - 1
// bytes. An odd digit is dropped, and every other character counts as a digit of value -1.
void DecodeHexString(char const* text, uint64_t length, BYTE* out);

// Bounded search over NUL bytes; null if not found.
BYTE* FindBytes(BYTE* data, uint64_t size, BYTE const* pattern, uint64_t pattern_size);

// Whether a name follows the key.
bool IsValueName(BYTE* data, uint64_t size, char const* key);
// Whether a reference does; its numbers may be missing. A failed search leaves a NUL in the last
// byte.
bool IsValueReference(BYTE* data, uint64_t size, char const* key);

// Whether digits up to white space or the end follow leading white space and one character
// that is not looked at (a sign). `length` 0 is the whole text; false for an empty text.
bool IsNumericText(char const* text, uint64_t length);

// The two numbers of "N G obj" at the start of a text. 0, with both numbers 0, for anything else.
int ParseObjectHeader(char const* text, DWORD* number, DWORD* generation);

// The names directly in a dictionary, keys and values alike, each with its slash: their
// number, and a new table (free()) of slots of kKeySlotBytes, zero-terminated, longer names cut.
// Null with 0 names.
inline constexpr uint64_t kKeySlotBytes = 50;
DWORD ListDictionaryKeys(BYTE const* data, uint64_t size, char** table);

// A text in the system's code page as UTF-16, in a new array (free()); null for null.
WCHAR* AnsiToWide(char const* text);

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_SCANNER_H_

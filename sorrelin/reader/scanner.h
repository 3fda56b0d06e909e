// Searches over the raw bytes of an object: the free functions that stand beside the scanner
// methods of the session. They set no error. Buffers are writable: a search under the temporary
// terminator changes the last byte while it runs.
#ifndef SORRELIN_READER_SCANNER_H_
#define SORRELIN_READER_SCANNER_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <string>

namespace sorrelin {

bool IsWhiteSpace(BYTE c);  // LF, CR, space
bool IsDigitChar(BYTE c);
bool IsDelimiterChar(BYTE c);  // white space, one of /[]()<>, or NUL

// Whether the key text occurs; the search ends at the first NUL.
bool BufferContains(BYTE const* data, uint64_t size, char const* key);
// Two, or one, decimal numbers behind a key. 1 or 0.
int GetIntPairAfterKey(BYTE* data, uint64_t size, char const* key, DWORD* first, DWORD* second);
int GetIntAfterKey(BYTE* data, uint64_t size, char const* key, DWORD* value);
// Up to `count` numbers of an array behind the key (without slash). 1 or 0.
int GetNumericArray(BYTE* data, DWORD size, char const* key, DWORD* values, DWORD count);
// The first name in a zero-terminated text, with its slash, in a new block (free()).
int ParseName(char const* text, char** name);
// The text between the first opening character and the last closing one, in a new block (free()).
int ExtractBracketed(char const* text, uint64_t size, char opening, char** out, uint64_t* length);
bool IsAllDigits(char const* text);
BYTE HexPairToByte(char first, char second);
int HexDigitValue(char c);  // 0 to 15, or -1
// Bounded search over NUL bytes; null if not found.
BYTE* FindBytes(BYTE* data, uint64_t size, BYTE const* pattern, uint64_t pattern_size);

}  // namespace sorrelin

#endif  // SORRELIN_READER_SCANNER_H_

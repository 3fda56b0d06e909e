// The key searches that the scanner methods and functions share. A key is text: it is found
// wherever its bytes are, inside a longer name, a string or stream data, before the first
// NUL byte.
//
// The terminated searches treat the buffer's last byte as a NUL: it is never part of a match. Which
// of them leave that NUL when nothing is found is part of what callers see.
#ifndef SORRELIN_SYNTAX_KEY_SEARCH_H_
#define SORRELIN_SYNTAX_KEY_SEARCH_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/char_class.h>

#include <cstdint>

namespace sorrelin {

inline constexpr uint64_t kNotFound = UINT64_MAX;

enum class LastByte {
  kKept,              // the buffer's last byte stays as it was in every case
  kTerminatedOnMiss,  // a search that fails leaves a NUL in the buffer's last byte
};

// Offset of the first byte from `at` on that is no LF, CR or space.
uint64_t SkipWhiteSpace(ByteView text, uint64_t at);

// Offset of the first occurrence of the key text in `size` bytes, at least 1, or kNotFound.
uint64_t FindKey(BYTE* data, uint64_t size, char const* key, LastByte last_byte);

// The same for "/" and the key, where a separator must follow: "/Decode" is not in "/DecodeParms".
// A miss leaves a NUL in the last byte.
uint64_t FindDelimitedName(BYTE* data, uint64_t size, char const* key);

// Offset after "/" and the key, whatever follows; the last byte takes part.
uint64_t FindBehindName(ByteView buffer, char const* key);

// Whether blanks, digits, blanks, digits, blanks and "R" are at `at`. All but the "R" may be
// missing: "R" alone is a reference to callers, who only distinguish references from direct values.
bool HasReferenceShape(ByteView buffer, uint64_t at, bool (*is_blank)(BYTE));

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_KEY_SEARCH_H_

// The typed reader of a dictionary: a value by its key and type, references followed where the
// document was opened by the stream route.
#ifndef SORRELIN_SYNTAX_TYPED_VALUE_H_
#define SORRELIN_SYNTAX_TYPED_VALUE_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/object_source.h>

namespace sorrelin {

// Reads the value of `key` (with its slash) from `size` bytes at `data` as type `type`, into a new
// block (free()) and its size in bytes. 1 or 0; no error is set. Types, and what the block holds:
//      1  string: its bytes, brackets off, escapes and hexadecimal digits resolved
//      2  name: the text with its slash
//      4  array: the text between its brackets; 6 is a name or an array
//      8  integer: an int32_t, 0 without digits; 16 is a boolean, 0 or 1
//     32  dictionary: its text, brackets included
//     64  real number: a double
//    512  array without inner arrays: its text, brackets included
//   1024  reference: two int32_t, number and generation
//    257, 258, 260, 272, 2048  any value: its text
//    264  the integer after "obj"; 1032 and 1056 the first digits anywhere
//    288  the first dictionary anywhere in the value
//   4096  all that follows the key, up to a NUL
// A NUL follows every text and is not counted. Other types give 0.
int GetTypedValue(ObjectSource* objects, BYTE* data, uint64_t size, char const* key, void** out,
                  uint64_t* out_size, DWORD type);

// Isolates one value at *text, `size` bytes; `*out` must be null on entry and receives a new block
// (free()) with a NUL after.
int ParseValueText(ObjectSource* objects, BYTE** text, uint64_t size, BYTE** out, DWORD* out_size);

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_TYPED_VALUE_H_

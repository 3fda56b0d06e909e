// The typed reader of a dictionary: a value by its key and type, references followed where the
// document was opened by the stream route.
#ifndef SORRELIN_READER_TYPED_VALUE_H_
#define SORRELIN_READER_TYPED_VALUE_H_

#include <sorrelin/frame/reader_state.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

// Reads the value of `key` (with its slash) from `size` bytes at `data` as type `type`, into a new
// block (free()) and its size. 1 or 0; no error is set.
int GetTypedValue(ReaderState* state, BYTE* data, uint64_t size, char const* key, void** out,
                  uint64_t* out_size, DWORD type);

// Isolates one value at *text, `size` bytes; `*out` must be null on entry and receives a new block
// (free()) with a NUL behind.
int ParseValueText(ReaderState* state, BYTE** text, uint64_t size, BYTE** out, DWORD* out_size);

}  // namespace sorrelin

#endif  // SORRELIN_READER_TYPED_VALUE_H_

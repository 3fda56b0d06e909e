// The fetch of an object's text through the index of a document opened by the stream route.
#ifndef SORRELIN_READER_OBJECT_FETCH_H_
#define SORRELIN_READER_OBJECT_FETCH_H_

#include <sorrelin/frame/reader_state.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

// A result without the valid flag may still hold a block. The block is the caller's (free()).
struct ObjectBytes {
  BYTE* pData = nullptr;
  DWORD nSize = 0;  // the terminator counts
  DWORD bValid = 0;
};

// Fills `out` with the object's text from its header through "endobj", a NUL behind; empty and
// invalid if the index does not know the object, or the document was opened by the classic route.
void LoadObjectBytes(ReaderState* state, ObjectBytes* out, DWORD number, DWORD generation);

}  // namespace sorrelin

#endif  // SORRELIN_READER_OBJECT_FETCH_H_

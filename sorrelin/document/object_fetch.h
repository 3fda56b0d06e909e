// The fetch of an object's text through the index of a document opened by the stream route, and the
// end of what reading a document has built up.
#ifndef SORRELIN_DOCUMENT_OBJECT_FETCH_H_
#define SORRELIN_DOCUMENT_OBJECT_FETCH_H_

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
// Moves the channel's position. Throws SorrelinStringError when memory for an object out of an
// object stream is short.
void LoadObjectBytes(ReaderState* state, ObjectBytes* out, DWORD number, DWORD generation);

// What opening the document, or one fetch from an open one, may handle: bytes that are read,
// inflated and handed out. A fetch that would need more gives no object.
uint64_t WorkFor(ReaderState const& state);

// Destroys the cross-reference object and the object stream list and forgets what was remembered of
// the document. Closing calls this, and opening before it builds anew.
void DestroyReaderObjects(ReaderState& state);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OBJECT_FETCH_H_

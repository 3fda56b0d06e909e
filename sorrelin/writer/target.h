// Where a document is written: a new file, an existing one that is updated, or memory.
#ifndef SORRELIN_WRITER_TARGET_H_
#define SORRELIN_WRITER_TARGET_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

// An open channel, or -1, and whether it holds a document that is to be updated.
struct Target {
  FileChannel* channel;
  bool update;
};

// Kept: a name that exists is updated; it is neither refused nor replaced. Throws std::bad_alloc
// where memory is too short to find out, with no file made.
Target OpenFileTarget(WCHAR const* name);
// A copy of the document of `size` bytes, or without a document `size` as the first capacity.
Target OpenMemoryTarget(void const* document, DWORD size);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_TARGET_H_

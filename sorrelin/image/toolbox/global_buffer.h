// A global memory block with its size.
#ifndef SORRELIN_IMAGE_TOOLBOX_GLOBAL_BUFFER_H_
#define SORRELIN_IMAGE_TOOLBOX_GLOBAL_BUFFER_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

// Owns the block. Both constructors throw the thread's system error, a DWORD, on failure; after a
// read that came short without an error that is 0.
class GlobalBuffer {
 public:
  // A copy of `size` bytes.
  GlobalBuffer(void const* bytes, DWORD size);
  // The content of a file, which must be smaller than 4 GiB.
  explicit GlobalBuffer(WCHAR const* path);
  ~GlobalBuffer();
  GlobalBuffer(GlobalBuffer const&) = delete;
  GlobalBuffer& operator=(GlobalBuffer const&) = delete;

  HGLOBAL hBlock = nullptr;
  DWORD nSize = 0;
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_TOOLBOX_GLOBAL_BUFFER_H_

// An object's text in memory for the time of a look at it.
#ifndef SORRELIN_DOCUMENT_LOADED_OBJECT_H_
#define SORRELIN_DOCUMENT_LOADED_OBJECT_H_

#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

// Takes a block from LoadObject, null included, locks it, and frees it at the end.
class LoadedObject {
 public:
  explicit LoadedObject(HGLOBAL block)
      : block_(block), data_(block != nullptr ? static_cast<BYTE*>(GlobalLock(block)) : nullptr) {}
  ~LoadedObject() {
    if (data_ != nullptr) GlobalUnlock(block_.get());
  }
  LoadedObject(LoadedObject const&) = delete;
  LoadedObject& operator=(LoadedObject const&) = delete;

  // Null if there is no object, or it is empty.
  BYTE* data() const { return data_; }
  // Bytes; what GetObjectSize says of the object.
  DWORD size() const { return data_ != nullptr ? static_cast<DWORD>(GlobalSize(block_.get())) : 0; }

 private:
  OwnedBlock block_;
  BYTE* data_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_LOADED_OBJECT_H_

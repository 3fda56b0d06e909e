// A global memory block that is locked for the life of this object.
#ifndef SORRELIN_IMAGE_LOCKED_BLOCK_H_
#define SORRELIN_IMAGE_LOCKED_BLOCK_H_

#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class LockedBlock {
 public:
  explicit LockedBlock(HGLOBAL handle) : handle_(handle) {
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) return;
    data_ = static_cast<BYTE*>(GlobalLock(handle));
  }
  ~LockedBlock() {
    if (data_ != nullptr) GlobalUnlock(handle_);
  }
  LockedBlock(LockedBlock const&) = delete;
  LockedBlock& operator=(LockedBlock const&) = delete;

  // False for a handle of 0 or -1 and for a block that cannot be locked.
  explicit operator bool() const { return data_ != nullptr; }
  // The whole block; empty if it is not locked.
  std::span<BYTE> bytes() const {
    return {data_, data_ == nullptr ? SIZE_T{0} : GlobalSize(handle_)};
  }
  // Gives the lock up without taking it back from the block.
  void LeaveLocked() { data_ = nullptr; }

 private:
  HGLOBAL handle_;
  BYTE* data_ = nullptr;
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_LOCKED_BLOCK_H_

// Owners of global memory blocks: for the life of the object a block is locked, or will be freed.
#ifndef SORRELIN_PLATFORM_BLOCK_H_
#define SORRELIN_PLATFORM_BLOCK_H_

#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/types.h>

#include <cstdint>
#include <limits>
#include <span>
#include <utility>

namespace sorrelin {

// Neither 0 nor -1, the two values by which operations report failure.
inline bool IsBlock(HGLOBAL block) { return block != nullptr && block != INVALID_HANDLE_VALUE; }

// Someone else's block, locked.
class LockedBlock {
 public:
  explicit LockedBlock(HGLOBAL handle) : handle_(handle) {
    if (IsBlock(handle)) data_ = static_cast<BYTE*>(GlobalLock(handle));
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

// A block that is freed when its owner goes.
class OwnedBlock {
 public:
  OwnedBlock() = default;
  explicit OwnedBlock(HGLOBAL block) : block_(block) {}
  OwnedBlock(OwnedBlock&& other) noexcept : block_(other.Release()) {}
  OwnedBlock& operator=(OwnedBlock&& other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~OwnedBlock() {
    if (IsValid()) GlobalFree(block_);
  }

  bool IsValid() const { return IsBlock(block_); }
  HGLOBAL get() const { return block_; }
  HGLOBAL Release() { return std::exchange(block_, nullptr); }

 private:
  HGLOBAL block_ = nullptr;
};

// A new block; not a valid one where memory is short, or the size more than addresses count.
inline OwnedBlock NewOwnedBlock(UINT flags, uint64_t bytes) {
  if (bytes > std::numeric_limits<SIZE_T>::max()) return OwnedBlock();
  return OwnedBlock(GlobalAlloc(flags, static_cast<SIZE_T>(bytes)));
}

}  // namespace sorrelin

#endif  // SORRELIN_PLATFORM_BLOCK_H_

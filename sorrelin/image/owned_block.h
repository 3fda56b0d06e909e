// A global memory block that is freed when its owner goes.
#ifndef SORRELIN_IMAGE_OWNED_BLOCK_H_
#define SORRELIN_IMAGE_OWNED_BLOCK_H_

#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/types.h>

#include <utility>

namespace sorrelin {

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

  // Neither 0 nor -1, the two values by which operations tell failure.
  bool IsValid() const { return block_ != nullptr && block_ != INVALID_HANDLE_VALUE; }
  HGLOBAL get() const { return block_; }
  HGLOBAL Release() { return std::exchange(block_, nullptr); }

 private:
  HGLOBAL block_ = nullptr;
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_OWNED_BLOCK_H_

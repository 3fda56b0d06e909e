// Owner of a global memory block.
#ifndef TOOLS_GLOBAL_BLOCK_H_
#define TOOLS_GLOBAL_BLOCK_H_

#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/types.h>

#include <utility>

namespace sorrelin::tool {

class GlobalBlock {
 public:
  GlobalBlock() = default;
  explicit GlobalBlock(HGLOBAL handle) : handle_(handle) {}
  GlobalBlock(GlobalBlock&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  GlobalBlock& operator=(GlobalBlock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~GlobalBlock() {
    if (handle_ != nullptr) GlobalFree(handle_);
  }

  explicit operator bool() const { return handle_ != nullptr; }
  HGLOBAL get() const { return handle_; }

 private:
  HGLOBAL handle_ = nullptr;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_GLOBAL_BLOCK_H_

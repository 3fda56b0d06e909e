// Global memory blocks on POSIX: handles over blocks of the C heap.
#include <sorrelin/platform/handle_table.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/posix_support.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace sorrelin {
namespace {

struct BlockRecord {
  // Complement of the address. Only the handle owns a block, so the table does not count as a
  // holder where leaks are searched.
  uintptr_t hidden_address;
  size_t size;      // as asked for
  size_t capacity;  // bytes at the address, at least 1
  uint32_t locks;
  bool movable;
  bool busy;  // being resized, by a thread that is outside the table's lock

  void* address() const { return reinterpret_cast<void*>(~hidden_address); }
  void set_address(void* address) { hidden_address = ~reinterpret_cast<uintptr_t>(address); }
};

using BlockTable = HandleTable<BlockRecord, HandleKind::kBlock>;

// Never destroyed: blocks may be freed by destructors that run at exit.
BlockTable& Blocks() {
  static NeverDestroyed<BlockTable> table;
  return table.value();
}

// Growth from here on comes from fresh zero pages if a copy of the old content is the smaller part.
constexpr size_t kFreshGrowth = 1024 * 1024;

void* Allocate(size_t bytes, bool zero) {
  if (bytes > PTRDIFF_MAX) return nullptr;
  return zero ? std::calloc(bytes, 1) : std::malloc(bytes);
}

// Calls use(block) for a live block that no other thread resizes; otherwise error 6 and false.
template <typename Use>
bool UseBlock(HGLOBAL handle, Use use) {
  bool used = false;
  Blocks().Visit(handle, [&](BlockRecord& block) {
    if (block.busy) return;
    use(block);
    used = true;
  });
  if (!used) SetLastError(ERROR_INVALID_HANDLE);
  return used;
}

// Resizes the block to `bytes` bytes, zeroing those past its old size if `zero`. False leaves it
// alone.
bool Move(BlockRecord& block, size_t bytes, bool zero) {
  if (bytes > PTRDIFF_MAX) return false;
  size_t const kept = std::min(block.size, bytes);
  size_t const growth = bytes - kept;
  void* address = nullptr;
  if (zero && growth >= kFreshGrowth && growth > kept) {
    address = std::calloc(bytes, 1);
    if (address == nullptr) return false;
    std::memcpy(address, block.address(), kept);
    std::free(block.address());
  } else {
    address = std::realloc(block.address(), std::max<size_t>(bytes, 1));
    if (address == nullptr) return false;
    if (zero) std::memset(static_cast<char*>(address) + kept, 0, growth);
  }
  block.set_address(address);
  block.size = bytes;
  block.capacity = std::max<size_t>(bytes, 1);
  return true;
}

bool ResizeInPlace(BlockRecord& block, size_t bytes, bool zero) {
  if (bytes > block.capacity) return false;
  if (zero && bytes > block.size) {
    std::memset(static_cast<char*>(block.address()) + block.size, 0, bytes - block.size);
  }
  block.size = bytes;
  return true;
}

bool Resize(BlockRecord& block, size_t bytes, UINT flags) {
  bool const zero = (flags & GMEM_ZEROINIT) != 0;
  bool const held = block.locks > 0 || !block.movable;
  bool const may_move = !held || (flags & GMEM_MOVEABLE) != 0;
  // A held block that only shrinks stays where it is, so that its address remains good.
  if (held && ResizeInPlace(block, bytes, zero)) return true;
  return may_move && Move(block, bytes, zero);
}

}  // namespace
}  // namespace sorrelin

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
  size_t const capacity = std::max<size_t>(bytes, 1);
  void* const address = sorrelin::Allocate(capacity, (flags & GMEM_ZEROINIT) != 0);
  if (address == nullptr) return sorrelin::Fail(ERROR_NOT_ENOUGH_MEMORY, HGLOBAL{});
  sorrelin::BlockRecord block{};
  block.set_address(address);
  block.size = bytes;
  block.capacity = capacity;
  block.movable = (flags & GMEM_MOVEABLE) != 0;
  HGLOBAL const handle =
      sorrelin::Guarded(HGLOBAL{}, [&] { return sorrelin::Blocks().Insert(block); });
  if (handle == nullptr) std::free(address);
  return handle;
}

HGLOBAL GlobalReAlloc(HGLOBAL handle, SIZE_T bytes, UINT flags) {
  sorrelin::BlockRecord block{};
  bool const found = sorrelin::UseBlock(handle, [&](sorrelin::BlockRecord& record) {
    block = record;
    record.busy = true;
  });
  if (!found) return nullptr;
  // Outside the table's lock: other threads need not wait for the copy.
  bool const resized = sorrelin::Resize(block, bytes, flags);
  sorrelin::Blocks().Visit(handle, [&](sorrelin::BlockRecord& record) { record = block; });
  return resized ? handle : sorrelin::Fail(ERROR_NOT_ENOUGH_MEMORY, HGLOBAL{});
}

void* GlobalLock(HGLOBAL handle) {
  void* address = nullptr;
  bool const found = sorrelin::UseBlock(handle, [&](sorrelin::BlockRecord& block) {
    if (block.movable && block.size == 0) return;
    ++block.locks;
    address = block.address();
  });
  if (found && address == nullptr) SetLastError(ERROR_DISCARDED);
  return address;
}

BOOL GlobalUnlock(HGLOBAL handle) {
  bool remain = false;
  DWORD error = ERROR_SUCCESS;
  bool const found = sorrelin::UseBlock(handle, [&](sorrelin::BlockRecord& block) {
    if (block.locks == 0) {
      error = ERROR_NOT_LOCKED;
    } else {
      remain = --block.locks > 0;
    }
  });
  if (found && !remain) SetLastError(error);
  return remain ? TRUE : FALSE;
}

SIZE_T GlobalSize(HGLOBAL handle) {
  size_t size = 0;
  sorrelin::UseBlock(handle, [&](sorrelin::BlockRecord const& block) { size = block.size; });
  return size;
}

HGLOBAL GlobalFree(HGLOBAL handle) {
  if (handle == nullptr) return nullptr;
  auto const block = sorrelin::Blocks().RemoveIf(
      handle, [](sorrelin::BlockRecord const& record) { return !record.busy; });
  if (!block) return sorrelin::Fail(ERROR_INVALID_HANDLE, handle);
  std::free(block->address());
  return nullptr;
}

SIZE_T GlobalCompact(DWORD) { return 0; }

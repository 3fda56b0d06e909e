// Files over global memory blocks.
#include <siblings/cadwick/memory_file.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/handle_table.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <cstring>

namespace sorrelin::cadwick {
namespace {

constexpr uint64_t kMaxFileBytes = UINT32_MAX;
constexpr uint64_t kSmallestGrowth = 4096;

using MemoryFileTable = HandleTable<std::shared_ptr<MemoryFile>, HandleKind::kMemoryFile>;

MemoryFileTable& OpenFiles() {
  static MemoryFileTable table;
  return table;
}

// A block of 0 bytes is live too; only GlobalSize's error distinguishes it from a bad handle.
bool IsLiveBlock(HGLOBAL block) {
  SetLastError(ERROR_SUCCESS);
  return GlobalSize(block) != 0 || GetLastError() == ERROR_SUCCESS;
}

}  // namespace

uint64_t MemoryFile::Size() const { return std::min<uint64_t>(size_, GlobalSize(block_)); }

bool MemoryFile::Reserve(uint64_t bytes) {
  uint64_t const capacity = GlobalSize(block_);
  if (bytes <= capacity) return true;
  if (bytes > kMaxFileBytes) return false;
  uint64_t const growth = std::max(capacity / 2, kSmallestGrowth);
  uint64_t const wanted = std::clamp(capacity + growth, bytes, kMaxFileBytes);
  return GlobalReAlloc(block_, static_cast<SIZE_T>(wanted), GMEM_MOVEABLE) != nullptr;
}

bool MemoryFile::Write(std::span<BYTE const> bytes) {
  if (bytes.empty()) return true;
  uint64_t const end = position_ + bytes.size();
  if (!Reserve(end)) return false;
  BYTE* const target = static_cast<BYTE*>(GlobalLock(block_));
  if (target == nullptr) return false;
  std::memcpy(target + position_, bytes.data(), bytes.size());
  GlobalUnlock(block_);
  size_ = written_ ? std::max(size_, end) : end;
  written_ = true;
  position_ = end;
  short_decode_.reset();
  return true;
}

bool MemoryFile::Seek(int64_t offset, DWORD origin) {
  uint64_t const size = Size();
  uint64_t const base = origin == FILE_BEGIN ? 0 : origin == FILE_CURRENT ? position_ : size;
  int64_t const target = static_cast<int64_t>(base) + offset;
  if (origin > FILE_END || target < 0 || target > static_cast<int64_t>(size)) return false;
  position_ = static_cast<uint64_t>(target);
  return true;
}

bool MemoryFile::Finish() {
  if (!written_ || GlobalSize(block_) == size_) return true;
  return GlobalReAlloc(block_, static_cast<SIZE_T>(size_), GMEM_MOVEABLE) != nullptr;
}

MemoryFileView::MemoryFileView(MemoryFile const& file) {
  uint64_t const size = file.Size();
  if (file.position_ >= size) return;
  BYTE const* const start = static_cast<BYTE const*>(GlobalLock(file.block_));
  if (start == nullptr) return;
  locked_ = file.block_;
  bytes_ = {start + file.position_, static_cast<size_t>(size - file.position_)};
}

MemoryFileView::~MemoryFileView() {
  if (locked_ != nullptr) GlobalUnlock(locked_);
}

HANDLE OpenMemoryFile(HGLOBAL block, DWORD size) {
  if (!IsLiveBlock(block)) return nullptr;
  return OpenFiles().Insert(std::make_shared<MemoryFile>(block, size));
}

std::shared_ptr<MemoryFile> FindMemoryFile(HANDLE handle) {
  return OpenFiles().Get(handle).value_or(nullptr);
}

std::shared_ptr<MemoryFile> CloseMemoryFile(HANDLE handle) {
  return OpenFiles().RemoveIf(handle, [](auto const&) { return true; }).value_or(nullptr);
}

}  // namespace sorrelin::cadwick

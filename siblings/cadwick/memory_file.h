// Files over global memory blocks, and the table of the open ones.
#ifndef SIBLINGS_CADWICK_MEMORY_FILE_H_
#define SIBLINGS_CADWICK_MEMORY_FILE_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace sorrelin::cadwick {

// A decode that found the data too short: what it found, so that the same decode for fewer rows,
// or more, need not be done to know its end.
struct ShortDecode {
  uint64_t position;
  uint32_t width;
  uint32_t rows;
};

// A block as a file with a position. The block is locked only while it is read or written.
class MemoryFile {
 public:
  // A file of the first `size` bytes of `block`.
  MemoryFile(HGLOBAL block, DWORD size) : block_(block), size_(size) {}

  // Writes at the position and moves it. The block grows in larger steps than the file, up to
  // 4 GiB - 1; false when it cannot.
  bool Write(std::span<BYTE const> bytes);

  // Positions from 0 to the file's end are valid; false, without a move, for others.
  bool Seek(int64_t offset, DWORD origin);
  uint64_t position() const { return position_; }

  // Truncates the block after the last byte written, if any.
  bool Finish();

  std::optional<ShortDecode> const& short_decode() const { return short_decode_; }
  void Remember(ShortDecode const& decode) { short_decode_ = decode; }

 private:
  friend class MemoryFileView;

  uint64_t Size() const;
  bool Reserve(uint64_t bytes);

  HGLOBAL block_;
  uint64_t size_;
  uint64_t position_ = 0;
  bool written_ = false;
  std::optional<ShortDecode> short_decode_;
};

// The bytes of a file from its position on, with the block locked while the view lives.
class MemoryFileView {
 public:
  explicit MemoryFileView(MemoryFile const& file);
  ~MemoryFileView();
  MemoryFileView(MemoryFileView const&) = delete;
  MemoryFileView& operator=(MemoryFileView const&) = delete;
  std::span<BYTE const> bytes() const { return bytes_; }

 private:
  HGLOBAL locked_ = nullptr;
  std::span<BYTE const> bytes_;
};

// Null if `block` is no live block.
HANDLE OpenMemoryFile(HGLOBAL block, DWORD size);

// Null for anything but an open memory file.
std::shared_ptr<MemoryFile> FindMemoryFile(HANDLE handle);

// The same, and the handle is open no more.
std::shared_ptr<MemoryFile> CloseMemoryFile(HANDLE handle);

}  // namespace sorrelin::cadwick

#endif  // SIBLINGS_CADWICK_MEMORY_FILE_H_

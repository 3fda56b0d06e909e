// Blocks filled from memory and from files.
#include <sorrelin/image/toolbox/global_buffer.h>
#include <sorrelin/image/toolbox/new_block.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include <span>

namespace sorrelin {
namespace {

// A file that is open for reading.
class OpenFile {
 public:
  explicit OpenFile(WCHAR const* path)
      : handle_(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (handle_ == INVALID_HANDLE_VALUE) throw GetLastError();
  }
  ~OpenFile() { CloseHandle(handle_); }
  OpenFile(OpenFile const&) = delete;
  OpenFile& operator=(OpenFile const&) = delete;

  DWORD Size() const {
    DWORD high = 0;
    SetLastError(ERROR_SUCCESS);
    DWORD const low = GetFileSize(handle_, &high);
    if (low == INVALID_FILE_SIZE && GetLastError() != ERROR_SUCCESS) throw GetLastError();
    if (high != 0) throw DWORD{ERROR_FILE_TOO_LARGE};
    return low;
  }
  void ReadAll(std::span<BYTE> out) const {
    DWORD count = 0;
    SetLastError(ERROR_SUCCESS);
    BOOL const done =
        ReadFile(handle_, out.data(), static_cast<DWORD>(out.size()), &count, nullptr);
    if (done == FALSE || count != out.size()) throw GetLastError();
  }

 private:
  HANDLE handle_;
};

std::span<BYTE const> Content(void const* bytes, DWORD size) {
  if (bytes == nullptr && size != 0) throw DWORD{ERROR_INVALID_PARAMETER};
  return {static_cast<BYTE const*>(bytes), size};
}

OwnedBlock Allocate(DWORD size, std::span<BYTE const> content = {}) {
  OwnedBlock block(NewBlock(size, content));
  if (!block.IsValid()) throw GetLastError();
  return block;
}

}  // namespace

GlobalBuffer::GlobalBuffer(void const* bytes, DWORD size)
    : hBlock(Allocate(size, Content(bytes, size)).Release()), nSize(size) {}

GlobalBuffer::GlobalBuffer(WCHAR const* path) {
  OpenFile const file(path);
  DWORD const size = file.Size();
  OwnedBlock block = Allocate(size);
  if (size != 0) file.ReadAll(LockedBlock(block.get()).bytes());
  hBlock = block.Release();
  nSize = size;
}

GlobalBuffer::~GlobalBuffer() { GlobalFree(hBlock); }

}  // namespace sorrelin

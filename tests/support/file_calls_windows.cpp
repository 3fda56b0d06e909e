// The test program's calls of ReadFile and WriteFile on Windows, which has no limit of the sizes of
// files: what is read is counted, and writes past a limit fail as they do on a full drive.
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>

#include "tests/support/environment.h"

namespace {

std::atomic<uint64_t> bytes_read = 0;
std::optional<uint64_t> limit;
bool lifted_by_a_failure = false;

// The system's own function.
template <typename Function>
Function* InSystem(char const* name) {
  HMODULE const kernel = GetModuleHandleW(L"kernel32.dll");
  return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(kernel, name)));
}

BOOL WINAPI CountedReadFile(HANDLE file, void* data, DWORD bytes, DWORD* count,
                            OVERLAPPED* overlapped) {
  static auto* const read = InSystem<decltype(CountedReadFile)>("ReadFile");
  DWORD own = 0;
  DWORD& done = count != nullptr ? *count : own;
  BOOL const result = read(file, data, bytes, &done, overlapped);
  if (result != FALSE) bytes_read += done;
  return result;
}

DWORD RoomIn(HANDLE file) {
  LARGE_INTEGER position{};
  if (!limit || SetFilePointerEx(file, {}, &position, FILE_CURRENT) == FALSE) return MAXDWORD;
  uint64_t const at = static_cast<uint64_t>(position.QuadPart);
  return static_cast<DWORD>(std::min<uint64_t>(at < *limit ? *limit - at : 0, MAXDWORD));
}

BOOL WINAPI LimitedWriteFile(HANDLE file, void const* data, DWORD bytes, DWORD* written,
                             OVERLAPPED* overlapped) {
  static auto* const write = InSystem<decltype(LimitedWriteFile)>("WriteFile");
  DWORD const room = RoomIn(file);
  if (bytes <= room) return write(file, data, bytes, written, overlapped);
  if (room > 0) write(file, data, room, written, overlapped);
  if (lifted_by_a_failure) limit.reset();
  SetLastError(ERROR_DISK_FULL);
  return FALSE;
}

}  // namespace

// The addresses that calls go through, in place of those of the import library.
#if defined(_WIN64)
#define IMPORTED(name, bytes) "__imp_" name
#else
#define IMPORTED(name, bytes) "__imp__" name "@" bytes
#endif
extern decltype(&CountedReadFile) const imported_read_file asm(IMPORTED("ReadFile", "20"));
decltype(&CountedReadFile) const imported_read_file = CountedReadFile;
extern decltype(&LimitedWriteFile) const imported_write_file asm(IMPORTED("WriteFile", "20"));
decltype(&LimitedWriteFile) const imported_write_file = LimitedWriteFile;

namespace test {

uint64_t BytesRead() { return bytes_read; }

FileSizeLimit::FileSizeLimit(size_t bytes, Failures failures) {
  limit = bytes;
  lifted_by_a_failure = failures == Failures::kFirst;
}

FileSizeLimit::~FileSizeLimit() { limit.reset(); }

}  // namespace test

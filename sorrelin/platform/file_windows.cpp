// Files on Windows, as far as the system has no operation of the same name.
#include <sorrelin/platform/file.h>

#include <cstdint>

BOOL ReadFileAt(HANDLE file, uint64_t offset, void* buffer, DWORD bytes, DWORD* count) {
  DWORD done = 0;
  DWORD& total = count != nullptr ? *count : done;
  total = 0;
  if (offset > INT64_MAX) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  // A pipe that has no data yet would end here, or be waited for.
  if (GetFileType(file) == FILE_TYPE_PIPE) {
    SetLastError(ERROR_SEEK_ON_DEVICE);
    return FALSE;
  }
  LARGE_INTEGER position{};
  if (SetFilePointerEx(file, position, &position, FILE_CURRENT) == FALSE) return FALSE;
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  BOOL read = ReadFile(file, buffer, bytes, &total, &place);
  DWORD const error = GetLastError();
  if (read == FALSE && error == ERROR_HANDLE_EOF) read = TRUE;
  SetFilePointerEx(file, position, nullptr, FILE_BEGIN);
  if (read == FALSE) SetLastError(error);
  return read;
}

// The temporary files of the siblings' file routes.
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/file.h>

namespace sorrelin {

DWORD MakeTempFile(WCHAR const* prefix, WCHAR* path) {
  WCHAR directory[MAX_PATH];
  DWORD const length = GetTempPathW(MAX_PATH, directory);
  if (length == 0 || length >= MAX_PATH) return PDF_ERROR_TEMP_DIRECTORY;
  return GetTempFileNameW(directory, prefix, 0, path) != 0 ? DWORD{PDF_ERROR_NONE}
                                                           : DWORD{PDF_ERROR_TEMP_FILE};
}

DWORD ReadIntoBlock(HANDLE file, DWORD size, OwnedBlock& block) {
  block = OwnedBlock(GlobalAlloc(GMEM_MOVEABLE, size));
  void* const data = GlobalLock(block.get());
  if (data == nullptr) return PDF_ERROR_MEMORY;
  DWORD count = 0;
  BOOL const read = ReadFile(file, data, size, &count, nullptr);
  GlobalUnlock(block.get());
  return read != 0 && count == size ? DWORD{PDF_ERROR_NONE} : DWORD{PDF_ERROR_TEMP_FILE};
}

bool WriteTempFile(WCHAR const* path, std::span<BYTE const> bytes) {
  if (bytes.size() > UINT32_MAX) return false;
  HANDLE const file = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD const size = static_cast<DWORD>(bytes.size());
  DWORD count = 0;
  BOOL const written = WriteFile(file, bytes.data(), size, &count, nullptr);
  CloseHandle(file);
  return written != 0 && count == size;
}

}  // namespace sorrelin

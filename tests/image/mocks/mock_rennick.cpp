// A JPEG sibling that turns any file into an 8-bit bitmap of one pixel, the file's first byte.
// Which entry points it has is chosen when it is built.
#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <string.h>
#include <tests/image/mocks/mock_siblings.h>

static MockRennick mock;

ENTRY MockRennick* Mock() { return &mock; }

[[maybe_unused]] static HDIB OnePixel(BYTE const* data, DWORD size) {
  ++mock.loads;
  mock.bytes = size;
  mock.first_byte = size != 0 ? *data : BYTE{0};
  if (mock.fails != 0) return nullptr;
  HGLOBAL const dib = GlobalAlloc(GHND, 40 + 1024 + 4);
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(dib));
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof header;
  header.biWidth = 1;
  header.biHeight = 1;
  header.biPlanes = 1;
  header.biBitCount = 8;
  header.biXPelsPerMeter = 1234;
  header.biYPelsPerMeter = 5678;
  memcpy(bytes, &header, sizeof header);
  bytes[40 + 1024] = mock.first_byte;
  GlobalUnlock(dib);
  return dib;
}

// The coded data are "JFIF" and the bitmap's width.
[[maybe_unused]] static HGLOBAL Coded(HDIB bitmap, void const* record) {
  mock.bitmap = bitmap;
  memcpy(mock.record, record, sizeof mock.record);
  HGLOBAL const block = GlobalAlloc(GMEM_MOVEABLE, mock.encode_empty != 0 ? 0 : 5);
  if (mock.encode_empty != 0) return block;
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(block));
  memcpy(bytes, "JFIF", 4);
  bytes[4] = mock.record[JPEG_RECORD_WIDTH];
  GlobalUnlock(block);
  return block;
}

#ifndef WITHOUT_MEMORY_SAVE
ENTRY HGLOBAL SaveDIBAsJPEGToMemoryEx(HDIB hDib, void const* pRecord, int* pStatus) {
  if (*pStatus != 0) return nullptr;
  *pStatus = mock.status;
  return mock.encode_null != 0 ? nullptr : Coded(hDib, pRecord);
}
#endif

#ifndef WITHOUT_FILE_SAVE
ENTRY int SaveDIBInJPEGFileExW(WCHAR const* szPath, HDIB hDib, void const* pRecord) {
  if (mock.save_fails != 0) return 1;
  HGLOBAL const block = Coded(hDib, pRecord);
  HANDLE const file = CreateFileW(szPath, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD const bytes = static_cast<DWORD>(GlobalSize(block));
  if (bytes != 0) WriteFile(file, GlobalLock(block), bytes, nullptr, nullptr);
  CloseHandle(file);
  GlobalFree(block);
  return 0;
}
#endif

#ifndef WITHOUT_MEMORY
ENTRY HDIB LoadJPEGIntoDIBFromMemory(void const* pData, DWORD nSize) {
  return OnePixel(static_cast<BYTE const*>(pData), nSize);
}
#endif

#ifndef WITHOUT_FILE
ENTRY HDIB LoadJPEGIntoDIBW(WCHAR const* szPath) {
  for (DWORD i = 0; i < MAX_PATH; ++i) {
    mock.path[i] = szPath[i];
    if (szPath[i] == 0) break;
  }
  HANDLE const file = CreateFileW(szPath, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return nullptr;
  BYTE data[64];
  DWORD count = 0;
  ReadFile(file, data, sizeof data, &count, nullptr);
  CloseHandle(file);
  return OnePixel(data, count);
}
#endif

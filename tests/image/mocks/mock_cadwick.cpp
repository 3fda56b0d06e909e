// A CCITT sibling whose coded data are packed rows, (width + 7) / 8 bytes each. Which entry points
// it has is chosen when it is built.
#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <string.h>
#include <tests/image/mocks/mock_siblings.h>

#include <thread>

static MockCadwick mock;

// The one memory file that may be open.
static struct {
  HGLOBAL block;
  DWORD size;
  DWORD position;
} memory_file;

ENTRY MockCadwick* Mock() { return &mock; }

#ifndef WITHOUT_MOPEN
ENTRY void* mOpen(HGLOBAL hBlock, DWORD nSize) {
  if (mock.open_fails != 0) return INVALID_HANDLE_VALUE;
  if (mock.open_null != 0) return nullptr;
  ++mock.opened;
  mock.opened_bytes = nSize;
  mock.opened_block_bytes = static_cast<DWORD>(GlobalSize(hBlock));
  memory_file = {hBlock, nSize, 0};
  return &memory_file;
}
#endif

#ifndef WITHOUT_MCLOSE
ENTRY int mClose(void*) { return ++mock.closed; }
#endif

#ifndef WITHOUT_MSEEK
ENTRY int mSeek(void*, int32_t nOffset, int32_t nOrigin) {
  ++mock.rewound;
  if (nOffset == 0 && nOrigin == 0) memory_file.position = 0;
  return 0;
}
#endif

[[maybe_unused]] static bool ReadRow(void* file, BYTE* row, DWORD bytes) {
  if (file != &memory_file) {
    DWORD count = 0;
    return ReadFile(file, row, bytes, &count, nullptr) != 0 && count == bytes;
  }
  if (memory_file.size - memory_file.position < bytes) return false;
  memcpy(row, static_cast<BYTE*>(GlobalLock(memory_file.block)) + memory_file.position, bytes);
  GlobalUnlock(memory_file.block);
  memory_file.position += bytes;
  return true;
}

#ifndef WITHOUT_DECODE
static int HandOver(CcittRowCallback pRow, BYTE* row, int32_t index, void* user) {
  if (mock.null_rows != 0) row = nullptr;
  if (mock.no_bitmap != 0) user = nullptr;
  if (mock.own_thread == 0) return pRow(row, index, user);
  int result = 0;
  std::thread([&] { result = pRow(row, index, user); }).join();
  return result;
}

ENTRY int DecodeCcittImage(void* hFile, int32_t nWidth, int32_t nHeight, int32_t nCompression,
                           void* pUser, CcittRowCallback pRow) {
  ++mock.decodes;
  mock.last_height = nHeight;
  mock.last_compression = nCompression;
  mock.last_user = pUser;
  mock.last_rows = 0;
  if (mock.fails_at_all != 0) return 0;
  BYTE row[8192];
  for (int32_t y = 0; y < nHeight; ++y) {
    if (!ReadRow(hFile, row, static_cast<DWORD>((nWidth + 7) / 8))) return 0;
    mock.last_callback = HandOver(pRow, row, mock.first_row + y, pUser);
    if (mock.last_callback != CCITT_ROW_DONE) return 0;
    ++mock.last_rows;
  }
  return 1;
}
#endif

#ifndef WITHOUT_ENCODE
static void WriteRow(void* file, BYTE const* row, DWORD bytes) {
  if (file != &memory_file) {
    WriteFile(file, row, bytes, nullptr, nullptr);
    return;
  }
  GlobalReAlloc(memory_file.block, memory_file.position + bytes, GMEM_MOVEABLE);
  memcpy(static_cast<BYTE*>(GlobalLock(memory_file.block)) + memory_file.position, row, bytes);
  GlobalUnlock(memory_file.block);
  memory_file.position += bytes;
}

ENTRY int EncodeCcittImage(void* hFile, int32_t nWidth, int32_t nHeight, int32_t nCompression,
                           void* pUser, CcittRowCallback pRow) {
  ++mock.encodes;
  mock.width = nWidth;
  mock.height = nHeight;
  mock.last_compression = nCompression;
  if (mock.writes_nothing != 0) {
    if (hFile == &memory_file) GlobalReAlloc(memory_file.block, 0, GMEM_MOVEABLE);
    return 1;
  }
  BYTE row[8192];
  for (int32_t y = 0; y < nHeight; ++y) {
    mock.last_callback = pRow(row, y, pUser);
    WriteRow(hFile, row, static_cast<DWORD>((nWidth + 7) / 8));
    if (mock.encode_fails != 0) return 0;
  }
  mock.past_end = pRow(row, nHeight, pUser);
  return 1;
}
#endif

#ifndef WITHOUT_TIFFERROR
ENTRY int TiffError(void) { return mock.error != 0 ? mock.error : int{CCITT_ERROR_DATA_ENDED}; }
#endif

#ifdef WITH_ROWS
ENTRY int CcittRowsDecoded(void) { return mock.last_rows; }
#endif

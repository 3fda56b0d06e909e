// The entry points of Rennick: checks of what callers pass, the parameter record, and files.
#include <siblings/rennick/density.h>
#include <siblings/rennick/dib_rows.h>
#include <siblings/rennick/jpeg_decoder.h>
#include <siblings/rennick/jpeg_encoder.h>
#include <siblings/rennick/rennick.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace sorrelin::rennick {
namespace {

constexpr int kDefaultQuality = 75;
constexpr int kMaxQuality = 100;

// A global block, locked while this object lives.
class LockedBlock {
 public:
  explicit LockedBlock(HGLOBAL block)
      : block_(block), address_(static_cast<BYTE*>(GlobalLock(block))) {}
  ~LockedBlock() {
    if (address_ != nullptr) GlobalUnlock(block_);
  }
  LockedBlock(LockedBlock const&) = delete;
  LockedBlock& operator=(LockedBlock const&) = delete;
  explicit operator bool() const { return address_ != nullptr; }
  std::span<BYTE const> bytes() const { return {address_, GlobalSize(block_)}; }

 private:
  HGLOBAL block_;
  BYTE* address_;
};

// A file handle, closed with this object.
class OpenFile {
 public:
  explicit OpenFile(HANDLE handle) : handle_(handle) {}
  ~OpenFile() { Close(); }
  OpenFile(OpenFile const&) = delete;
  OpenFile& operator=(OpenFile const&) = delete;
  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }
  bool Close() {
    HANDLE const handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
    return handle == INVALID_HANDLE_VALUE || CloseHandle(handle) != FALSE;
  }

 private:
  HANDLE handle_;
};

uint32_t RecordNumber(void const* record, size_t offset, size_t bytes) {
  BYTE const* const at = static_cast<BYTE const*>(record) + offset;
  uint32_t value = 0;
  for (size_t i = 0; i < bytes; ++i) value |= uint32_t{at[i]} << (8 * i);
  return value;
}

JpegSettings SettingsOf(void const* record) {
  int const quality = static_cast<int16_t>(RecordNumber(record, JPEG_RECORD_QUALITY, 2));
  PixelsPerMetre const resolution{
      static_cast<LONG>(RecordNumber(record, JPEG_RECORD_X_DENSITY, 4)),
      static_cast<LONG>(RecordNumber(record, JPEG_RECORD_Y_DENSITY, 4))};
  return {quality <= 0 ? kDefaultQuality : std::min(quality, kMaxQuality), DensityOf(resolution)};
}

EncodedJpeg EncodeBitmap(HDIB dib, void const* record) {
  if (record == nullptr) return {nullptr, RENNICK_BAD_ARGUMENT};
  LockedBlock const block(dib);
  if (!block) return {nullptr, RENNICK_BAD_ARGUMENT};
  try {
    auto rows = DibRows::Of(block.bytes());
    if (!rows) return {nullptr, RENNICK_BAD_BITMAP};
    return EncodeJpeg(*rows, SettingsOf(record));
  } catch (std::bad_alloc const&) {
    return {nullptr, RENNICK_NO_MEMORY};
  }
}

// The system error, or ERROR_SUCCESS.
DWORD WriteFileOf(WCHAR const* path, std::span<BYTE const> bytes) {
  OpenFile file(
      CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return GetLastError();
  DWORD const size = static_cast<DWORD>(bytes.size());
  DWORD written = 0;
  bool const done = WriteFile(file.get(), bytes.data(), size, &written, nullptr) != FALSE;
  return done && file.Close() ? ERROR_SUCCESS : GetLastError();
}

HDIB DecodeFile(HANDLE file) {
  DWORD high = 0;
  DWORD const size = GetFileSize(file, &high);
  if (high != 0 || size == 0) return nullptr;
  std::unique_ptr<BYTE[]> const data(new (std::nothrow) BYTE[size]);
  DWORD count = 0;
  if (data == nullptr || ReadFile(file, data.get(), size, &count, nullptr) == FALSE) return nullptr;
  return DecodeJpeg({data.get(), count});
}

}  // namespace
}  // namespace sorrelin::rennick

namespace rennick = sorrelin::rennick;

// Callers cast what they find by name to these types.
static_assert(std::is_same_v<decltype(&SaveDIBAsJPEGToMemoryEx), SaveDIBAsJPEGToMemoryExFunction>);
static_assert(std::is_same_v<decltype(&SaveDIBInJPEGFileExW), SaveDIBInJPEGFileExWFunction>);
static_assert(
    std::is_same_v<decltype(&LoadJPEGIntoDIBFromMemory), LoadJPEGIntoDIBFromMemoryFunction>);
static_assert(std::is_same_v<decltype(&LoadJPEGIntoDIBW), LoadJPEGIntoDIBWFunction>);

HGLOBAL SaveDIBAsJPEGToMemoryEx(HDIB hDib, void const* pRecord, int* pStatus) {
  rennick::EncodedJpeg const result = rennick::EncodeBitmap(hDib, pRecord);
  if (pStatus != nullptr) *pStatus = result.status;
  return result.block;
}

int SaveDIBInJPEGFileExW(WCHAR const* szPath, HDIB hDib, void const* pRecord) {
  if (szPath == nullptr) return RENNICK_BAD_ARGUMENT;
  rennick::EncodedJpeg const result = rennick::EncodeBitmap(hDib, pRecord);
  if (result.block == nullptr) return result.status;
  DWORD const error = rennick::WriteFileOf(szPath, rennick::LockedBlock(result.block).bytes());
  GlobalFree(result.block);
  if (error == ERROR_SUCCESS) return RENNICK_OK;
  SetLastError(error);
  return RENNICK_FILE_FAILED;
}

HDIB LoadJPEGIntoDIBFromMemory(void const* pData, DWORD nSize) {
  if (pData == nullptr) return nullptr;
  return rennick::DecodeJpeg({static_cast<BYTE const*>(pData), nSize});
}

HDIB LoadJPEGIntoDIBW(WCHAR const* szPath) {
  if (szPath == nullptr) return nullptr;
  rennick::OpenFile const file(CreateFileW(szPath, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                           OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  return file ? rennick::DecodeFile(file.get()) : nullptr;
}

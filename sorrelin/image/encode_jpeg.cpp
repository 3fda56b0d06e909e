// JPEG image data, coded by the sibling library in memory or through a temporary file.
#include <sorrelin/image/codecs/jpeg_record.h>
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/image/encoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>

#include <utility>

namespace sorrelin {

namespace {

constexpr int kBilevel = 1;

// Kept: `size` is set as soon as it is known, also where a later step fails; so it is below.
DWORD EncodeInMemory(SaveDIBAsJPEGToMemoryExFunction save, HDIB bitmap, JpegRecord const& record,
                     OwnedBlock& block, DWORD& size) {
  int status = 0;
  block = OwnedBlock(save(bitmap, record.data(), &status));
  if (status != 0 || !block.IsValid()) return PDF_ERROR_ENCODING;
  size = static_cast<DWORD>(GlobalSize(block.get()));
  if (size == 0) return PDF_ERROR_ENCODING;
  if (GlobalLock(block.get()) == nullptr) return PDF_ERROR_MEMORY;
  GlobalUnlock(block.get());
  return PDF_ERROR_NONE;
}

DWORD ReadTempFile(WCHAR const* path, OwnedBlock& block, DWORD& size) {
  HANDLE const file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_TEMPORARY, nullptr);
  if (file == INVALID_HANDLE_VALUE) return PDF_ERROR_TEMP_FILE;
  size = GetFileSize(file, nullptr);
  DWORD const result =
      size != INVALID_FILE_SIZE ? ReadIntoBlock(file, size, block) : DWORD{PDF_ERROR_TEMP_FILE};
  CloseHandle(file);
  return result;
}

// Kept: after a failure the temporary file stays.
DWORD EncodeInFile(SaveDIBInJPEGFileExWFunction save, HDIB bitmap, JpegRecord const& record,
                   OwnedBlock& block, DWORD& size) {
  WCHAR path[MAX_PATH];
  DWORD const made = MakeTempFile(SORRELIN_TEXT("~tm"), path);
  if (made != PDF_ERROR_NONE) return made;
  if (save(path, bitmap, record.data()) != 0) return PDF_ERROR_TEMP_FILE;
  DWORD const result = ReadTempFile(path, block, size);
  if (result == PDF_ERROR_NONE) DeleteFileW(path);
  return result;
}

// The coded block, or -1 with the code.
Result<OwnedBlock> Outcome(DWORD code, OwnedBlock& block) {
  return code == PDF_ERROR_NONE ? Result<OwnedBlock>(std::move(block)) : Refused(code);
}

}  // namespace

// Kept: while the sibling lacks the entry point the call begins again and does not come back; it
// never turns to the file route.
Result<OwnedBlock> EncodeJpeg(DibView const& dib, WCHAR const* name, int quality, DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  if (dib.header().biBitCount == kBilevel) return Refused(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  for (;;) {
    SiblingLibrary const library(name);
    if (!library.IsLoaded()) return Refused(PDF_ERROR_JPEG_LIBRARY);
    auto const save = library.Entry<SaveDIBAsJPEGToMemoryExFunction>("SaveDIBAsJPEGToMemoryEx");
    if (save == nullptr) continue;
    JpegRecord const record = MakeJpegRecord(dib.header(), quality);
    OwnedBlock block;
    return Outcome(EncodeInMemory(save, dib.bitmap(), record, block, size), block);
  }
}

Result<OwnedBlock> EncodeJpegInFile(DibView const& dib, WCHAR const* name, int quality,
                                    DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  if (dib.header().biBitCount == kBilevel) return Refused(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  SiblingLibrary const library(name);
  if (!library.IsLoaded()) return Refused(PDF_ERROR_JPEG_LIBRARY);
  auto const save = library.Entry<SaveDIBInJPEGFileExWFunction>("SaveDIBInJPEGFileExW");
  // Kept: a missing file entry point is reported by the CCITT library's code.
  if (save == nullptr) return Refused(PDF_ERROR_CCITT_LIBRARY);
  JpegRecord const record = MakeJpegRecord(dib.header(), quality);
  OwnedBlock block;
  return Outcome(EncodeInFile(save, dib.bitmap(), record, block, size), block);
}

}  // namespace sorrelin

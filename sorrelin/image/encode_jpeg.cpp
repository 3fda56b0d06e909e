// JPEG image data, coded by the sibling library in memory or through a temporary file.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/codecs/jpeg_record.h>
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/image/dib_view.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/wide_string.h>

using sorrelin::DibView;
using sorrelin::OwnedBlock;
using sorrelin::SiblingLibrary;

namespace {

constexpr int kBilevel = 1;

// Kept: `size` is set as soon as it is known, also where a later step fails; so it is below.
DWORD EncodeInMemory(SaveDIBAsJPEGToMemoryExFunction save, HDIB bitmap,
                     sorrelin::JpegRecord const& record, OwnedBlock& block, DWORD& size) {
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
  DWORD const result = size != INVALID_FILE_SIZE ? sorrelin::ReadIntoBlock(file, size, block)
                                                 : DWORD{PDF_ERROR_TEMP_FILE};
  CloseHandle(file);
  return result;
}

// Kept: after a failure the temporary file stays.
DWORD EncodeInFile(SaveDIBInJPEGFileExWFunction save, HDIB bitmap,
                   sorrelin::JpegRecord const& record, OwnedBlock& block, DWORD& size) {
  WCHAR path[MAX_PATH];
  DWORD const made = sorrelin::MakeTempFile(SORRELIN_TEXT("~tm"), path);
  if (made != PDF_ERROR_NONE) return made;
  if (save(path, bitmap, record.data()) != 0) return PDF_ERROR_TEMP_FILE;
  DWORD const result = ReadTempFile(path, block, size);
  if (result == PDF_ERROR_NONE) DeleteFileW(path);
  return result;
}

}  // namespace

void* sorrelin::SessionState::ConvertDIB2DctJpegPDFImage(void* hDIB, DWORD& nSize,
                                                         char const* szCodecLibrary, int nQuality,
                                                         DWORD nCompression) {
  return ConvertDIB2DctJpegPDFImageW(hDIB, nSize, sorrelin::ToWide(szCodecLibrary).c_str(),
                                     nQuality, nCompression);
}

// Kept: while the sibling lacks the entry point the call begins again and does not come back; it
// never turns to the file route.
void* sorrelin::SessionState::ConvertDIB2DctJpegPDFImageW(void* hDIB, DWORD& nSize,
                                                          WCHAR const* szCodecLibrary, int nQuality,
                                                          DWORD /*nCompression*/) {
  for (;;) {
    DibView const dib(hDIB);
    if (!dib.IsLocked()) return INVALID_HANDLE_VALUE;
    if (dib.header().biBitCount == kBilevel) return FailBlock(PDF_ERROR_INVALID_BITS_PER_PIXEL);
    SiblingLibrary const library(szCodecLibrary);
    if (!library.IsLoaded()) return FailBlock(PDF_ERROR_JPEG_LIBRARY);
    auto const save = library.Entry<SaveDIBAsJPEGToMemoryExFunction>("SaveDIBAsJPEGToMemoryEx");
    if (save == nullptr) continue;
    OwnedBlock block;
    return EncodedBlock(
        EncodeInMemory(save, hDIB, sorrelin::MakeJpegRecord(dib.header(), nQuality), block, nSize),
        block);
  }
}

void* sorrelin::SessionState::ConvertDIB2DctJpegPDFImageFileW(void* hDIB, DWORD& nSize,
                                                              WCHAR const* szCodecLibrary,
                                                              int nQuality,
                                                              DWORD /*nCompression*/) {
  DibView const dib(hDIB);
  if (!dib.IsLocked()) return INVALID_HANDLE_VALUE;
  if (dib.header().biBitCount == kBilevel) return FailBlock(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  SiblingLibrary const library(szCodecLibrary);
  if (!library.IsLoaded()) return FailBlock(PDF_ERROR_JPEG_LIBRARY);
  auto const save = library.Entry<SaveDIBInJPEGFileExWFunction>("SaveDIBInJPEGFileExW");
  // Kept: a missing file entry point is told by the CCITT library's code.
  if (save == nullptr) return FailBlock(PDF_ERROR_CCITT_LIBRARY);
  OwnedBlock block;
  return EncodedBlock(
      EncodeInFile(save, hDIB, sorrelin::MakeJpegRecord(dib.header(), nQuality), block, nSize),
      block);
}

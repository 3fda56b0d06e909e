// JPEG image data back into a bitmap, decoded by the sibling library from memory or from a
// temporary file. Depth and size of the bitmap are the sibling's.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/file.h>

using sorrelin::LockedBlock;
using sorrelin::SiblingLibrary;

namespace {

constexpr WCHAR const* kLibraryName = SORRELIN_TEXT("Rennick.dll");

}  // namespace

void* sorrelin::SessionState::CreateDIBFromJPEGData(void* hData) {
  if (hData == nullptr) return nullptr;
  {
    SiblingLibrary const library(kLibraryName);
    if (!library.IsLoaded()) return FailBitmap(PDF_ERROR_JPEG_LIBRARY);
    auto const load = library.Entry<LoadJPEGIntoDIBFromMemoryFunction>("LoadJPEGIntoDIBFromMemory");
    if (load != nullptr) {
      LockedBlock const data(hData);
      if (!data) return nullptr;
      HDIB const bitmap = load(data.bytes().data(), static_cast<DWORD>(data.bytes().size()));
      return bitmap != nullptr ? bitmap : FailBitmap(PDF_ERROR_DECOMPRESSION);
    }
  }
  return CreateDIBFromJPEGDataFile(hData);
}

void* sorrelin::SessionState::CreateDIBFromJPEGDataFile(void* hData) {
  if (hData == nullptr) return nullptr;
  SiblingLibrary const library(kLibraryName);
  if (!library.IsLoaded()) return FailBitmap(PDF_ERROR_JPEG_LIBRARY);
  auto const load = library.Entry<LoadJPEGIntoDIBWFunction>("LoadJPEGIntoDIBW");
  if (load == nullptr) return FailBitmap(PDF_ERROR_JPEG_LIBRARY);
  WCHAR path[MAX_PATH];
  DWORD const made = sorrelin::MakeTempFile(SORRELIN_TEXT("~tm"), path);
  if (made != PDF_ERROR_NONE) return FailBitmap(made);
  LockedBlock const data(hData);
  // Kept: neither a file that cannot be written nor data that cannot be decoded sets a code here;
  // callers of the file route look at the handle only.
  if (!data || !sorrelin::WriteTempFile(path, data.bytes())) return nullptr;
  HDIB const bitmap = load(path);
  DeleteFileW(path);
  return bitmap;
}

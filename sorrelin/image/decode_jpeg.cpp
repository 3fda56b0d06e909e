// JPEG image data back into a bitmap, decoded by the sibling library from memory or from a
// temporary file. Depth and size of the bitmap are the sibling's.
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/sibling_names.h>
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/image/decoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/file.h>

namespace sorrelin {

Result<OwnedBlock> DecodeJpeg(HGLOBAL block) {
  if (block == nullptr) return Status::Failed();
  {
    SiblingLibrary const library(kJpegLibrary);
    if (!library.IsLoaded()) return Status::Failed(PDF_ERROR_JPEG_LIBRARY);
    auto const load = library.Entry<LoadJPEGIntoDIBFromMemoryFunction>("LoadJPEGIntoDIBFromMemory");
    if (load != nullptr) {
      LockedBlock const data(block);
      if (!data) return Status::Failed();
      HDIB const bitmap = load(data.bytes().data(), static_cast<DWORD>(data.bytes().size()));
      if (bitmap == nullptr) return Status::Failed(PDF_ERROR_DECOMPRESSION);
      return OwnedBlock(bitmap);
    }
  }
  return DecodeJpegInFile(block);
}

Result<OwnedBlock> DecodeJpegInFile(HGLOBAL block) {
  if (block == nullptr) return Status::Failed();
  SiblingLibrary const library(kJpegLibrary);
  if (!library.IsLoaded()) return Status::Failed(PDF_ERROR_JPEG_LIBRARY);
  auto const load = library.Entry<LoadJPEGIntoDIBWFunction>("LoadJPEGIntoDIBW");
  if (load == nullptr) return Status::Failed(PDF_ERROR_JPEG_LIBRARY);
  WCHAR path[MAX_PATH];
  DWORD const made = MakeTempFile(SORRELIN_TEXT("~tm"), path);
  if (made != PDF_ERROR_NONE) return Status::Failed(made);
  LockedBlock const data(block);
  // Kept: neither a file that cannot be written nor data that cannot be decoded sets a code here;
  // callers of the file route look at the handle only.
  if (!data || !WriteTempFile(path, data.bytes())) return Status::Failed();
  HDIB const bitmap = load(path);
  DeleteFileW(path);
  return OwnedBlock(bitmap);
}

}  // namespace sorrelin

// The library's coders, called through a session, and what their error codes mean to a user.
#include "tools/make/coding/bitmap_coder.h"

#include <sorrelin/platform/memory.h>

#include <utility>

#include "tools/formats/image_source.h"
#include "tools/system/remedies.h"

namespace sorrelin::tool {
namespace {

constexpr WCHAR const* kGroup4Library = SORRELIN_TEXT("Cadwick.dll");
constexpr WCHAR const* kJpegLibrary = SORRELIN_TEXT("Rennick.dll");
constexpr int kUsualFlateLevel = -1;

std::string MissingCoder(std::string const& coding, std::string const& library) {
  return "the " + coding + " coder " + LibraryFile(library) +
         " is missing or unusable: " + InstallRemedy("sorrelin-codecs") +
         " (or use --compression flate)";
}

}  // namespace

LockedBytes::LockedBytes(OwnedBlock block, DWORD bytes) : block_(std::move(block)) {
  BYTE const* const data = static_cast<BYTE const*>(GlobalLock(block_.get()));
  if (data != nullptr) bytes_ = {data, bytes};
}

LockedBytes::~LockedBytes() {
  if (bytes_.data() != nullptr) GlobalUnlock(block_.get());
}

LockedBytes::LockedBytes(LockedBytes&& other) noexcept
    : block_(std::move(other.block_)), bytes_(std::exchange(other.bytes_, {})) {}

LockedBytes& LockedBytes::operator=(LockedBytes&& other) noexcept {
  std::swap(block_, other.block_);
  std::swap(bytes_, other.bytes_);
  return *this;
}

DWORD IdentifierOf(Compression compression) {
  switch (compression) {
    case Compression::kGroup4:
      return PDF_COMPRESSION_CCITT;
    case Compression::kFlate:
      return PDF_COMPRESSION_FLATE;
    case Compression::kRunLength:
      return PDF_COMPRESSION_RUN_LENGTH;
    case Compression::kJpeg:
      return PDF_COMPRESSION_JPEG;
    default:
      return PDF_COMPRESSION_NONE;
  }
}

BitmapCoder::BitmapCoder() : session_(std::make_unique<CCreatePDF>()) {}

bool BitmapCoder::Code(OwnedBlock const& dib, int depth, Compression compression, int quality,
                       CodedBitmap& coded, std::string& problem) {
  session_->PDF_SetLastError(PDF_ERROR_MEMORY);
  if (depth == 8) {
    DWORD palette_bytes = 0;
    coded.palette = OwnedBlock(session_->ExtractPaletteFromDIB(dib.get(), &palette_bytes));
    if (!coded.palette.IsValid()) return problem = Reason(), false;
  }
  bool const jpeg = compression == Compression::kJpeg;
  DWORD size = 0;
  OwnedBlock encoded(session_->ConvertDIB2PDFImageW(dib.get(), size, IdentifierOf(compression),
                                                    jpeg ? kJpegLibrary : kGroup4Library,
                                                    jpeg ? quality : kUsualFlateLevel));
  if (!encoded.IsValid()) return problem = Reason(), false;
  coded.data = LockedBytes(std::move(encoded), size);
  if (coded.data.bytes().data() == nullptr) return problem = kMemoryText, false;
  return true;
}

POINT BitmapCoder::PageSize(int width, int height, Resolution dpi) {
  return session_->CalculatePageSizeFromPixelsAndDPI(width, height, static_cast<DWORD>(dpi.x),
                                                     static_cast<DWORD>(dpi.y));
}

std::string BitmapCoder::Reason() {
  switch (session_->PDF_GetLastError()) {
    case PDF_ERROR_MEMORY:
      return kMemoryText;
    case PDF_ERROR_CCITT_LIBRARY:
      return MissingCoder("Group 4", "Cadwick.dll");
    case PDF_ERROR_JPEG_LIBRARY:
      return MissingCoder("JPEG", "Rennick.dll");
    default:
      return "cannot be coded (--compression flate)";
  }
}

}  // namespace sorrelin::tool

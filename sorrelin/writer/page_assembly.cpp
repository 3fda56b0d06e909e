// One bitmap, one page: the checks, the encoder, and the way into the page's objects.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/frame/trace.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/writer/encoded_page.h>

using sorrelin::EncodedPage;
using sorrelin::OwnedBlock;
using sorrelin::ToWide;

int sorrelin::SessionState::SaveDIBAsPDFPage(void* hDIB, char const* szCodecLibrary) {
  return SaveDIBAsPDFPageW(hDIB, ToWide(szCodecLibrary).c_str());
}

int sorrelin::SessionState::SaveDIBAsPDFPageW(void* hDIB, WCHAR const* szCodecLibrary) {
  return SaveDIBAsColorPDFPageW(hDIB, szCodecLibrary, PDF_COMPRESSION_CCITT, 0);
}

int sorrelin::SessionState::SaveDIBAsColorPDFPage(void* hDIB, char const* szCodecLibrary,
                                                  DWORD nCompression, int nQuality) {
  char const* const library = szCodecLibrary != nullptr ? szCodecLibrary : "";
  return SaveDIBAsColorPDFPageW(hDIB, ToWide(library).c_str(), nCompression, nQuality);
}

int sorrelin::SessionState::SaveDIBAsColorPDFPageW(void* hDIB, WCHAR const* szCodecLibrary,
                                                   DWORD nCompression, int nQuality) {
  if (!BeginPage()) return 0;
  EncodedPage page;
  page.compression = nCompression;
  if (DescribeBitmap(hDIB, page)) EncodeAndWrite(hDIB, szCodecLibrary, nQuality, page);
  return EndPage() ? 1 : 0;
}

// Size, depth, resolution and polarity of the bitmap; false with the code of what is refused.
bool sorrelin::SessionState::DescribeBitmap(void* hDIB, EncodedPage& page) {
  if (hDIB == nullptr) return Fail(PDF_ERROR_INVALID_HANDLE) != 0;
  sorrelin::Trace(SORRELIN_TEXT("SaveDIBAsPDFPage: hDIB = %d"));
  POINT const size = GetDIBImageSize(hDIB);
  if (size.x == 0 || size.y == 0) return Fail(PDF_ERROR_INVALID_IMAGE_SIZE) != 0;
  int const bits = GetDIBBitsPerPixel(hDIB);
  if (bits != 1 && bits != 8 && bits != 24) return Fail(PDF_ERROR_INVALID_BITS_PER_PIXEL) != 0;
  page.dpi = GetDIBDPI(hDIB);
  if (page.dpi.x == 0 || page.dpi.y == 0) return Fail(PDF_ERROR_INVALID_DPI) != 0;
  int order = 1;
  if (bits == 1 && CheckDIBPaletteOrder(hDIB, order) == 0) return false;
  page.width = size.x;
  page.height = size.y;
  page.bits_per_pixel = bits;
  page.decode_normal = order != 0;
  return true;
}

// Kept: the compression is tested by its bits here and by equality in the encoder's dispatch.
bool sorrelin::SessionState::IsPairRefused(int32_t nBitsPerPixel, DWORD nCompression) {
  return nBitsPerPixel == 1 ? IsCompession_DCT_JPEG_DECODE(nCompression) != 0
                            : IsCompession_CCITT_FAX_DECODE(nCompression) != 0;
}

void sorrelin::SessionState::EncodeAndWrite(void* hDIB, WCHAR const* szCodecLibrary, int nQuality,
                                            EncodedPage& page) {
  if (IsPairRefused(page.bits_per_pixel, page.compression)) {
    PDF_SetLastError(PDF_ERROR_COMPRESSION);
    return;
  }
  DWORD palette_bytes = 0;
  OwnedBlock const palette(page.bits_per_pixel == 8 ? ExtractPaletteFromDIB(hDIB, &palette_bytes)
                                                    : nullptr);
  if (page.bits_per_pixel == 8 && !palette.IsValid()) return;
  OwnedBlock const encoded(
      ConvertDIB2PDFImageW(hDIB, page.size, page.compression, szCodecLibrary, nQuality));
  if (!encoded.IsValid()) return;
  page.data = static_cast<BYTE const*>(GlobalLock(encoded.get()));
  if (page.data == nullptr) {
    PDF_SetLastError(PDF_ERROR_MEMORY);
    return;
  }
  page.palette = palette.get();
  WritePageObjects(page);
  GlobalUnlock(encoded.get());
}

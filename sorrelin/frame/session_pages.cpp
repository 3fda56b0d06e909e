// Doors of the session: bitmaps as pages.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/writer/compression.h>
#include <sorrelin/writer/creation_time.h>
#include <sorrelin/writer/encoded_page.h>
#include <sorrelin/writer/page_objects.h>

using sorrelin::Door;
using sorrelin::EncodedPage;
using sorrelin::OwnedBlock;
using sorrelin::SessionState;
using sorrelin::Status;
using sorrelin::ToWide;

namespace {

// How a bitmap becomes coded bytes.
struct Coding {
  WCHAR const* library;
  DWORD compression;
  int quality;
};

// Size, depth, resolution and polarity of the bitmap; the code of what is refused.
Status DescribeBitmap(SessionState& state, void* bitmap, EncodedPage& page) {
  if (bitmap == nullptr) return Status::Failed(PDF_ERROR_INVALID_HANDLE);
  POINT const size = state.GetDIBImageSize(bitmap);
  if (size.x == 0 || size.y == 0) return Status::Failed(PDF_ERROR_INVALID_IMAGE_SIZE);
  int const bits = state.GetDIBBitsPerPixel(bitmap);
  if (bits != 1 && bits != 8 && bits != 24) {
    return Status::Failed(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  }
  page.dpi = state.GetDIBDPI(bitmap);
  if (page.dpi.x == 0 || page.dpi.y == 0) return Status::Failed(PDF_ERROR_INVALID_DPI);
  int order = 1;
  if (bits == 1 && state.CheckDIBPaletteOrder(bitmap, order) == 0) return Status::Failed();
  page.width = size.x;
  page.height = size.y;
  page.bits_per_pixel = bits;
  page.decode_normal = order != 0;
  return Status::Ok();
}

// Kept: the compression is tested by its bits here and by equality in the encoder's dispatch.
bool IsPairRefused(int32_t bits_per_pixel, DWORD compression) {
  return bits_per_pixel == 1 ? sorrelin::IsJpeg(compression) : sorrelin::IsCcitt(compression);
}

Status EncodeAndWrite(SessionState& state, void* bitmap, Coding const& coding, EncodedPage& page) {
  if (IsPairRefused(page.bits_per_pixel, coding.compression)) {
    return Status::Failed(PDF_ERROR_COMPRESSION);
  }
  DWORD palette_bytes = 0;
  OwnedBlock const palette(
      page.bits_per_pixel == 8 ? state.ExtractPaletteFromDIB(bitmap, &palette_bytes) : nullptr);
  if (page.bits_per_pixel == 8 && !palette.IsValid()) return Status::Failed();
  OwnedBlock const encoded(state.ConvertDIB2PDFImageW(bitmap, page.size, coding.compression,
                                                      coding.library, coding.quality));
  if (!encoded.IsValid()) return Status::Failed();
  sorrelin::LockedBlock const data(encoded.get());
  if (!data) return Status::Failed(PDF_ERROR_MEMORY);
  page.compression = coding.compression;
  page.data = data.bytes().data();
  page.palette = palette.get();
  return WritePageObjects(state.Document(), page);
}

// Around what makes a page. Kept: a failed first page counts as begun, so the seek of an update is
// not repeated for the next one; and a page has failed if anything on its way left a code.
template <typename Work>
bool AddPage(SessionState& state, Work work) {
  if (!state.Report(BeginPage(state.Document()))) return false;
  state.m_nLastError = PDF_ERROR_NONE;
  static_cast<void>(state.Report(work()));
  if (state.m_Update.active != 0) state.m_Update.first_page = 0;
  return state.m_nLastError == PDF_ERROR_NONE;
}

int SaveBitmap(SessionState& state, void* bitmap, Coding const& coding) {
  return AddPage(state, [&] {
    EncodedPage page;
    Status const described = DescribeBitmap(state, bitmap, page);
    return described.ok() ? EncodeAndWrite(state, bitmap, coding, page) : described;
  });
}

}  // namespace

int CCreatePDF::SaveDIBAsPDFPage(void* hDIB, char const* szCodecLibrary) {
  return Door(m_pState, [&](SessionState& state) {
    return SaveBitmap(state, hDIB, {ToWide(szCodecLibrary).c_str(), PDF_COMPRESSION_CCITT, 0});
  });
}

int CCreatePDF::SaveDIBAsPDFPageW(void* hDIB, WCHAR const* szCodecLibrary) {
  return SaveDIBAsColorPDFPageW(hDIB, szCodecLibrary, PDF_COMPRESSION_CCITT, 0);
}

int CCreatePDF::SaveDIBAsColorPDFPage(void* hDIB, char const* szCodecLibrary, DWORD nCompression,
                                      int nQuality) {
  return Door(m_pState, [&](SessionState& state) {
    char const* const library = szCodecLibrary != nullptr ? szCodecLibrary : "";
    return SaveBitmap(state, hDIB, {ToWide(library).c_str(), nCompression, nQuality});
  });
}

int CCreatePDF::SaveDIBAsColorPDFPageW(void* hDIB, WCHAR const* szCodecLibrary, DWORD nCompression,
                                       int nQuality) {
  return Door(m_pState, [&](SessionState& state) {
    return SaveBitmap(state, hDIB, {szCodecLibrary, nCompression, nQuality});
  });
}

POINT CCreatePDF::CalculatePageSizeFromPixelsAndDPI(LONG nWidth, LONG nHeight, DWORD nDpiX,
                                                    DWORD nDpiY) {
  return sorrelin::PageSize(nWidth, nHeight, nDpiX, nDpiY);
}

int CCreatePDF::CheckDIBPaletteOrder(void* hDIB, int& nOrder) {
  return Door(m_pState,
              [&](SessionState& state) { return state.CheckDIBPaletteOrder(hDIB, nOrder); });
}

bool sorrelin::WriteEncodedPage(CCreatePDF& session, EncodedPage const& page) {
  return Door(SessionAccess::Of(session), [&](SessionState& state) {
    return AddPage(state, [&] { return WritePageObjects(state.Document(), page); });
  });
}

void sorrelin::SetCreationTime(CCreatePDF& session, SYSTEMTIME const& time) {
  SessionState* const state = SessionAccess::Of(session);
  if (state != nullptr) state->m_pReader->m_CreationTime = time;
}

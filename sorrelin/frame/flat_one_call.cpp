// The one-call helpers: one page to a file or to memory, on a private session.
#include <sorrelin/frame/flat.h>
#include <memory>
#include <new>

using sorrelin::Guarded;
using sorrelin::ResultOf;
using sorrelin::ToWide;

namespace {

// Null where memory is short.
SORRELIN_NOINLINE std::unique_ptr<CCreatePDF> NewPrivateSession() {
  return std::unique_ptr<CCreatePDF>(new (std::nothrow) CCreatePDF);
}

// Kept: the private session, which is made before the guards, is not freed by them.
DWORD Abandon(std::unique_ptr<CCreatePDF>& session, DWORD error) {
  static_cast<void>(session.release());
  return error;
}

struct Page {
  HDIB bitmap;
  WCHAR const* codec_library;
  DWORD compression;
  int quality;
};

int SavePage(CCreatePDF& session, Page const& page) {
  return session.SaveDIBAsColorPDFPageW(page.bitmap, page.codec_library, page.compression,
                                        page.quality);
}

// Kept: a failed page's document is finished all the same, so that it ends well-formed with the
// pages that it had; the page's error is what the caller sees.
DWORD FinishAfterFailedPage(CCreatePDF& session) {
  DWORD const error = session.PDF_GetLastError();
  session.FinishPDF();
  return error;
}

DWORD SaveToFile(CCreatePDF& session, WCHAR const* file_name, Page const& page) {
  if (session.CreatePDFW(file_name) == 0) return session.PDF_GetLastError();
  if (SavePage(session, page) == 0) return FinishAfterFailedPage(session);
  return ResultOf(session, session.FinishPDF());
}

DWORD SaveToMemory(CCreatePDF& session, void** data, DWORD* size, Page const& page) {
  if (session.CreatePDFInMemory(reinterpret_cast<int64_t>(*data), *size) == 0) {
    return session.PDF_GetLastError();
  }
  if (SavePage(session, page) == 0) return FinishAfterFailedPage(session);
  int64_t document = 0;
  if (session.FinishPDFInMemory(&document, size) == 0) return session.PDF_GetLastError();
  *data = reinterpret_cast<void*>(document);
  return PDF_ERROR_NONE;
}

}  // namespace

DWORD pdf_SaveDIBToPDF(char const* szFileName, HDIB hDib, char const* szCodecLibrary,
                       DWORD nCompression, int nQuality) {
  return Guarded(hPDF{0}, DWORD{PDF_ERROR_MEMORY}, [&] {
    return pdf_SaveDIBToPDFW(ToWide(szFileName).c_str(), hDib, ToWide(szCodecLibrary).c_str(),
                             nCompression, nQuality);
  });
}

DWORD pdf_SaveDIBToPDFW(WCHAR const* szFileName, HDIB hDib, WCHAR const* szCodecLibrary,
                        DWORD nCompression, int nQuality) {
  std::unique_ptr<CCreatePDF> session = NewPrivateSession();
  if (session == nullptr) return PDF_ERROR_MEMORY;
  if (hDib == nullptr) return Abandon(session, PDF_ERROR_INVALID_HANDLE);
  if (szFileName == nullptr || *szFileName == 0) return Abandon(session, PDF_ERROR_NULL_POINTER);
  // Kept: what failed leaves the file open. It is closed where memory is short, because callers try
  // again then.
  DWORD const result =
      SaveToFile(*session, szFileName, {hDib, szCodecLibrary, nCompression, nQuality});
  if (session->PDF_GetLastError() == PDF_ERROR_MEMORY) session->ClosePDFFile();
  return result;
}

DWORD pdf_SaveDIBToPDFInMemory(void** ppData, DWORD* pnSize, HDIB hDib, WCHAR const* szCodecLibrary,
                               DWORD nCompression, int nQuality) {
  std::unique_ptr<CCreatePDF> session = NewPrivateSession();
  if (session == nullptr) return PDF_ERROR_MEMORY;
  if (hDib == nullptr) return Abandon(session, PDF_ERROR_INVALID_HANDLE);
  if (ppData == nullptr || pnSize == nullptr) return Abandon(session, PDF_ERROR_NULL_POINTER);
  return SaveToMemory(*session, ppData, pnSize, {hDib, szCodecLibrary, nCompression, nQuality});
}

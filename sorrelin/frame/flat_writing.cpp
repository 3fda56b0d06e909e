// Flat functions that make a document.
#include <sorrelin/frame/flat.h>

#include <cstdlib>

using sorrelin::OnSession;
using sorrelin::WithWide;

namespace {

bool IsBadBitmap(HDIB bitmap) { return bitmap == nullptr || bitmap == INVALID_HANDLE_VALUE; }

}  // namespace

DWORD pdf_CreatePDF(hPDF hPdf, char const* szFileName) {
  return WithWide(hPdf, szFileName, [&](WCHAR const* name) { return pdf_CreatePDFW(hPdf, name); });
}

DWORD pdf_CreatePDFW(hPDF hPdf, WCHAR const* szFileName) {
  return OnSession(hPdf, [&](CCreatePDF& session) { return session.CreatePDFW(szFileName); });
}

DWORD pdf_CreatePDFInMemory(hPDF hPdf, void const* pAppendTo, DWORD nSize) {
  return OnSession(hPdf, [&](CCreatePDF& session) {
    return session.CreatePDFInMemory(reinterpret_cast<int64_t>(pAppendTo), nSize);
  });
}

DWORD pdf_SaveDIBAsPDFPage(hPDF hPdf, HDIB hDib, char const* szCodecLibrary) {
  return WithWide(hPdf, szCodecLibrary,
                  [&](WCHAR const* library) { return pdf_SaveDIBAsPDFPageW(hPdf, hDib, library); });
}

DWORD pdf_SaveDIBAsPDFPageW(hPDF hPdf, HDIB hDib, WCHAR const* szCodecLibrary) {
  if (IsBadBitmap(hDib)) return PDF_ERROR_INVALID_HANDLE;
  return OnSession(
      hPdf, [&](CCreatePDF& session) { return session.SaveDIBAsPDFPageW(hDib, szCodecLibrary); });
}

DWORD pdf_SaveDIBAsColorPDFPage(hPDF hPdf, HDIB hDib, char const* szCodecLibrary,
                                DWORD nCompression, int nQuality) {
  return WithWide(hPdf, szCodecLibrary, [&](WCHAR const* library) {
    return pdf_SaveDIBAsColorPDFPageW(hPdf, hDib, library, nCompression, nQuality);
  });
}

DWORD pdf_SaveDIBAsColorPDFPageW(hPDF hPdf, HDIB hDib, WCHAR const* szCodecLibrary,
                                 DWORD nCompression, int nQuality) {
  if (IsBadBitmap(hDib)) return PDF_ERROR_INVALID_HANDLE;
  return OnSession(hPdf, [&](CCreatePDF& session) {
    return session.SaveDIBAsColorPDFPageW(hDib, szCodecLibrary, nCompression, nQuality);
  });
}

DWORD pdf_FinishPDF(hPDF hPdf) {
  return OnSession(hPdf, [](CCreatePDF& session) { return session.FinishPDF(); });
}

DWORD pdf_FinishPDFInMemory(hPDF hPdf, void** ppData, DWORD* pnSize) {
  return OnSession(hPdf, [&](CCreatePDF& session) {
    int64_t data = 0;
    int const finished = session.FinishPDFInMemory(ppData != nullptr ? &data : nullptr, pnSize);
    if (finished != 0 && ppData != nullptr) *ppData = reinterpret_cast<void*>(data);
    return finished;
  });
}

void pdf_ClosePDFFile(hPDF hPdf) { reinterpret_cast<CCreatePDF*>(hPdf)->ClosePDFFile(); }

DWORD pdf_ClosePDFInMemory(hPDF hPdf) {
  reinterpret_cast<CCreatePDF*>(hPdf)->ClosePDFFileInMemory(nullptr, nullptr);
  return PDF_ERROR_NONE;
}

DWORD pdf_FreePDFInMemory(void* pData) {
  std::free(pData);
  return PDF_ERROR_NONE;
}

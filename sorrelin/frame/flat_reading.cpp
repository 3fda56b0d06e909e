// Flat functions that read a document.
#include <sorrelin/frame/flat.h>

using sorrelin::Guarded;
using sorrelin::OnSession;
using sorrelin::SessionOf;
using sorrelin::ToWide;
using sorrelin::WithWide;

namespace {

constexpr DWORD kNoCount = 0xFFFFFFFF;

// A session of its own for one call, released whatever becomes of the call.
class PrivateSession {
 public:
  PrivateSession() : result_(pdf_Init_PDF(&handle_)) {}
  ~PrivateSession() {
    if (result_ == PDF_ERROR_NONE) pdf_Release_PDF(handle_);
  }
  PrivateSession(PrivateSession const&) = delete;
  PrivateSession& operator=(PrivateSession const&) = delete;

  bool Open(WCHAR const* file_name) {
    return result_ == PDF_ERROR_NONE && pdf_OpenPDFFileW(handle_, file_name) == PDF_ERROR_NONE;
  }
  bool Open(void const* data, DWORD size) {
    return result_ == PDF_ERROR_NONE && pdf_OpenPDFInMemory(handle_, data, size) == PDF_ERROR_NONE;
  }
  hPDF handle() const { return handle_; }

 private:
  hPDF handle_ = 0;
  DWORD result_;
};

}  // namespace

DWORD pdf_OpenPDFFile(hPDF hPdf, char const* szFileName) {
  return WithWide(hPdf, szFileName,
                  [&](WCHAR const* name) { return pdf_OpenPDFFileW(hPdf, name); });
}

DWORD pdf_OpenPDFFileW(hPDF hPdf, WCHAR const* szFileName) {
  if (szFileName == nullptr) return PDF_ERROR_INVALID_HANDLE;
  return OnSession(hPdf, [&](CCreatePDF& session) { return session.OpenPDFFileW(szFileName); });
}

DWORD pdf_OpenPDFInMemory(hPDF hPdf, void const* pData, DWORD nSize) {
  if (SessionOf(hPdf) == nullptr) return PDF_ERROR_INVALID_HANDLE;
  if (pData == nullptr) return PDF_ERROR_NULL_POINTER;
  if (nSize == 0) return PDF_ERROR_NOT_PDF;
  return OnSession(hPdf, [&](CCreatePDF& session) {
    return session.OpenPDFFileInMemory(reinterpret_cast<int64_t>(pData), nSize);
  });
}

DWORD pdf_GetNumberOfPages(hPDF hPdf) {
  CCreatePDF* const session = SessionOf(hPdf);
  return session != nullptr ? session->GetNumberOfPages() : 0;
}

HDIB pdf_LoadImageFromPDF(hPDF hPdf, DWORD nPage) {
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return nullptr;
  session->PDF_SetLastError(PDF_ERROR_NONE);
  return Guarded(hPdf, HDIB{}, [&] { return session->LoadImageFromPDF(nPage); });
}

HDIB pdf_LoadPDFIntoDIB(char const* szFileName, DWORD nPage) {
  return Guarded(hPDF{0}, HDIB{},
                 [&] { return pdf_LoadPDFIntoDIBW(ToWide(szFileName).c_str(), nPage); });
}

HDIB pdf_LoadPDFIntoDIBW(WCHAR const* szFileName, DWORD nPage) {
  PrivateSession session;
  return session.Open(szFileName) ? pdf_LoadImageFromPDF(session.handle(), nPage) : nullptr;
}

HDIB pdf_LoadPDFIntoDIBInMemory(void const* pData, DWORD nSize, DWORD nPage) {
  PrivateSession session;
  return session.Open(pData, nSize) ? pdf_LoadImageFromPDF(session.handle(), nPage) : nullptr;
}

DWORD GetNumberOfPagesInPDFFile(char const* szFileName) {
  return Guarded(hPDF{0}, kNoCount,
                 [&] { return GetNumberOfPagesInPDFFileW(ToWide(szFileName).c_str()); });
}

DWORD GetNumberOfPagesInPDFFileW(WCHAR const* szFileName) {
  PrivateSession session;
  return session.Open(szFileName) ? pdf_GetNumberOfPages(session.handle()) : kNoCount;
}

DWORD GetNumberOfPagesInPDFInMemory(void const* pData, DWORD nSize) {
  PrivateSession session;
  return session.Open(pData, nSize) ? pdf_GetNumberOfPages(session.handle()) : kNoCount;
}

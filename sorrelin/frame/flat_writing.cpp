// Flat functions that make a document.
#include <sorrelin/frame/flat.h>
#include <sorrelin/frame/trace.h>
#include <sorrelin/platform/wide_string.h>

#include <cstdlib>

using sorrelin::ResultOf;
using sorrelin::SessionOf;
using sorrelin::ToWide;
using sorrelin::Trace;

namespace {

bool IsBadBitmap(HDIB bitmap) { return bitmap == nullptr || bitmap == INVALID_HANDLE_VALUE; }

}  // namespace

DWORD pdf_CreatePDF(hPDF hPdf, char const* szFileName) {
  return pdf_CreatePDFW(hPdf, ToWide(szFileName).c_str());
}

DWORD pdf_CreatePDFW(hPDF hPdf, WCHAR const* szFileName) {
  Trace(SORRELIN_TEXT("pdf_CreatePDF START"));
  Trace(SORRELIN_TEXT("pdf_CreatePDF szFileName = %s"));
  Trace(SORRELIN_TEXT("pdf_CreatePDF pPDF = %x"));
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  Trace(SORRELIN_TEXT("pdf_CreatePDF CreatePDF start"));
  int const created = session->CreatePDFW(szFileName);
  Trace(created != 0 ? SORRELIN_TEXT("pdf_CreatePDF END OK")
                     : SORRELIN_TEXT("pdf_CreatePDF CreatePDF error"));
  return ResultOf(*session, created);
}

DWORD pdf_CreatePDFInMemory(hPDF hPdf, void const* pAppendTo, DWORD nSize) {
  Trace(SORRELIN_TEXT("pdf_CreatePDFInMemory START"));
  Trace(SORRELIN_TEXT("pdf_CreatePDFInMemory pPDF = %x"));
  Trace(SORRELIN_TEXT("pdf_CreatePDFInMemory pAppendTo = %p"));
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  Trace(SORRELIN_TEXT("pdf_CreatePDFInMemory CreatePDF start"));
  int const created = session->CreatePDFInMemory(reinterpret_cast<int64_t>(pAppendTo), nSize);
  Trace(created != 0 ? SORRELIN_TEXT("pdf_CreatePDFInMemory END OK")
                     : SORRELIN_TEXT("pdf_CreatePDFInMemory CreatePDF error"));
  return ResultOf(*session, created);
}

DWORD pdf_SaveDIBAsPDFPage(hPDF hPdf, HDIB hDib, char const* szCodecLibrary) {
  return pdf_SaveDIBAsPDFPageW(hPdf, hDib, ToWide(szCodecLibrary).c_str());
}

DWORD pdf_SaveDIBAsPDFPageW(hPDF hPdf, HDIB hDib, WCHAR const* szCodecLibrary) {
  Trace(SORRELIN_TEXT("pdf_SaveDIBAsPDFPage START"));
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr || IsBadBitmap(hDib)) return PDF_ERROR_INVALID_HANDLE;
  Trace(SORRELIN_TEXT("pdf_SaveDIBAsPDFPage SaveDDIBAsPDFPage START, hDIB=%x"));
  int const saved = session->SaveDIBAsPDFPageW(hDib, szCodecLibrary);
  Trace(saved != 0 ? SORRELIN_TEXT("pdf_SaveDIBAsPDFPage OK")
                   : SORRELIN_TEXT("pdf_SaveDIBAsPDFPage ERROR"));
  return ResultOf(*session, saved);
}

DWORD pdf_SaveDIBAsColorPDFPage(hPDF hPdf, HDIB hDib, char const* szCodecLibrary,
                                DWORD nCompression, int nQuality) {
  return pdf_SaveDIBAsColorPDFPageW(hPdf, hDib, ToWide(szCodecLibrary).c_str(), nCompression,
                                    nQuality);
}

DWORD pdf_SaveDIBAsColorPDFPageW(hPDF hPdf, HDIB hDib, WCHAR const* szCodecLibrary,
                                 DWORD nCompression, int nQuality) {
  Trace(SORRELIN_TEXT("pdf_SaveDIBAsColorPDFPage"));
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr || IsBadBitmap(hDib)) return PDF_ERROR_INVALID_HANDLE;
  int const saved = session->SaveDIBAsColorPDFPageW(hDib, szCodecLibrary, nCompression, nQuality);
  Trace(saved != 0 ? SORRELIN_TEXT("pdf_SaveDIBAsColorPDFPage OK")
                   : SORRELIN_TEXT("pdf_SaveDIBAsColorPDFPage ERROR"));
  return ResultOf(*session, saved);
}

DWORD pdf_FinishPDF(hPDF hPdf) {
  Trace(SORRELIN_TEXT("pdf_FinishPDF START"));
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  Trace(SORRELIN_TEXT("pdf_FinishPDF FinishPDF START"));
  int const finished = session->FinishPDF();
  Trace(finished != 0 ? SORRELIN_TEXT("pdf_FinishPDF FinishPDF OK")
                      : SORRELIN_TEXT("pdf_FinishPDF FinishPDF ERROR"));
  return ResultOf(*session, finished);
}

DWORD pdf_FinishPDFInMemory(hPDF hPdf, void** ppData, DWORD* pnSize) {
  Trace(SORRELIN_TEXT("pdf_FinishPDFInMemory START"));
  CCreatePDF* const session = SessionOf(hPdf);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  Trace(SORRELIN_TEXT("pdf_FinishPDFInMemory FinishPDF START"));
  int64_t data = 0;
  int const finished = session->FinishPDFInMemory(ppData != nullptr ? &data : nullptr, pnSize);
  if (finished != 0 && ppData != nullptr) *ppData = reinterpret_cast<void*>(data);
  Trace(finished != 0 ? SORRELIN_TEXT("pdf_FinishPDFInMemory FinishPDF OK")
                      : SORRELIN_TEXT("pdf_FinishPDFInMemory FinishPDF ERROR"));
  return ResultOf(*session, finished);
}

void pdf_ClosePDFFile(hPDF hPdf) {
  Trace(SORRELIN_TEXT("pdf_ClosePDFFile Closing the PDF file"));
  reinterpret_cast<CCreatePDF*>(hPdf)->ClosePDFFile();
}

DWORD pdf_ClosePDFInMemory(hPDF hPdf) {
  Trace(SORRELIN_TEXT("pdf_ClosePDFInMemory Closing the PDF file"));
  reinterpret_cast<CCreatePDF*>(hPdf)->ClosePDFFileInMemory(nullptr, nullptr);
  return PDF_ERROR_NONE;
}

DWORD pdf_FreePDFInMemory(void* pData) {
  std::free(pData);
  return PDF_ERROR_NONE;
}

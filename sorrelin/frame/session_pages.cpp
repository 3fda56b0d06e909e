// Doors of the session: bitmaps as pages, and the end of an update.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/writer/creation_time.h>
#include <sorrelin/writer/encoded_page.h>

using sorrelin::Door;
using sorrelin::SessionState;

int CCreatePDF::SaveDIBAsPDFPage(void* hDIB, char const* szCodecLibrary) {
  return Door(m_pState,
              [&](SessionState& state) { return state.SaveDIBAsPDFPage(hDIB, szCodecLibrary); });
}

int CCreatePDF::SaveDIBAsPDFPageW(void* hDIB, WCHAR const* szCodecLibrary) {
  return Door(m_pState,
              [&](SessionState& state) { return state.SaveDIBAsPDFPageW(hDIB, szCodecLibrary); });
}

int CCreatePDF::SaveDIBAsColorPDFPage(void* hDIB, char const* szCodecLibrary, DWORD nCompression,
                                      int nQuality) {
  return Door(m_pState, [&](SessionState& state) {
    return state.SaveDIBAsColorPDFPage(hDIB, szCodecLibrary, nCompression, nQuality);
  });
}

int CCreatePDF::SaveDIBAsColorPDFPageW(void* hDIB, WCHAR const* szCodecLibrary, DWORD nCompression,
                                       int nQuality) {
  return Door(m_pState, [&](SessionState& state) {
    return state.SaveDIBAsColorPDFPageW(hDIB, szCodecLibrary, nCompression, nQuality);
  });
}

POINT CCreatePDF::CalculatePageSizeFromPixelsAndDPI(LONG nWidth, LONG nHeight, DWORD nDpiX,
                                                    DWORD nDpiY) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CalculatePageSizeFromPixelsAndDPI(nWidth, nHeight, nDpiX, nDpiY);
  });
}

int CCreatePDF::CheckDIBPaletteOrder(void* hDIB, int& nOrder) {
  return Door(m_pState,
              [&](SessionState& state) { return state.CheckDIBPaletteOrder(hDIB, nOrder); });
}

int CCreatePDF::CreatePagesRootObjectForAppend() {
  return Door(m_pState, [](SessionState& state) { return state.CreatePagesRootObjectForAppend(); });
}

int CCreatePDF::WriteXrefForAppend() {
  return Door(m_pState, [](SessionState& state) { return state.WriteXrefForAppend(); });
}

void CCreatePDF::InitAppendedPageObjectsList() {
  return Door(m_pState, [](SessionState& state) { return state.InitAppendedPageObjectsList(); });
}

bool sorrelin::WriteEncodedPage(CCreatePDF& session, EncodedPage const& page) {
  return Door(SessionAccess::Of(session),
              [&](SessionState& state) { return state.WriteEncodedPage(page); });
}

void sorrelin::SetCreationTime(CCreatePDF& session, SYSTEMTIME const& time) {
  SessionState* const state = SessionAccess::Of(session);
  if (state != nullptr) state->m_pReader->m_CreationTime = time;
}

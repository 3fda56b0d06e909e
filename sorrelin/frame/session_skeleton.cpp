// Doors of the session: the objects around the images.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

int CCreatePDF::WritePDFHeader(char const* szTitle, char const* szCreator) {
  return Door(m_pState,
              [&](SessionState& state) { return state.WritePDFHeader(szTitle, szCreator); });
}

DWORD CCreatePDF::CreateOutlinesObject(DWORD nCount) {
  return Door(m_pState, [&](SessionState& state) { return state.CreateOutlinesObject(nCount); });
}

DWORD CCreatePDF::CreatePagesRootObject() {
  return Door(m_pState, [](SessionState& state) { return state.CreatePagesRootObject(); });
}

DWORD CCreatePDF::CreatePageObject(DWORD nParent, int nResourceType, DWORD nResourceObject,
                                   DWORD nProcSetObject, char const* szResourceName, POINT ptSize) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreatePageObject(nParent, nResourceType, nResourceObject, nProcSetObject,
                                  szResourceName, ptSize);
  });
}

DWORD CCreatePDF::CreateProcSetObject(int nImageType, int bText) {
  return Door(m_pState,
              [&](SessionState& state) { return state.CreateProcSetObject(nImageType, bText); });
}

DWORD CCreatePDF::CreateFontObject() {
  return Door(m_pState, [](SessionState& state) { return state.CreateFontObject(); });
}

DWORD CCreatePDF::CreateCatalogObject(DWORD nPagesRoot, DWORD nOutlines) {
  return Door(m_pState, [&](SessionState& state) {
    return state.CreateCatalogObject(nPagesRoot, nOutlines);
  });
}

// Doors of the session: the object table of an open document.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

DWORD CCreatePDF::BuildObjectListFromFile() {
  return Door(m_pState, [](SessionState& state) { return state.BuildObjectListFromFile(); });
}

DWORD CCreatePDF::BuildObjectListFromTrailer(DWORD* pPrev) {
  return Door(m_pState,
              [&](SessionState& state) { return state.BuildObjectListFromTrailer(pPrev); });
}

int CCreatePDF::BuildObjectListFromXrefTable(DWORD nOffset, int bOlder) {
  return Door(m_pState, [&](SessionState& state) {
    return state.BuildObjectListFromXrefTable(nOffset, bOlder);
  });
}

int CCreatePDF::ReadPrevFlag(DWORD* pPrev) {
  return Door(m_pState, [&](SessionState& state) { return state.ReadPrevFlag(pPrev); });
}

DWORD CCreatePDF::GetRealObjectNumber(DWORD nOffset) {
  return Door(m_pState, [&](SessionState& state) { return state.GetRealObjectNumber(nOffset); });
}

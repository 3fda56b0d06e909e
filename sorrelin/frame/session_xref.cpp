// Doors of the session: the object table of an open document.
#include <sorrelin/document/classic_route.h>
#include <sorrelin/document/opening.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::ClassicRoute;
using sorrelin::Door;
using sorrelin::SessionState;

namespace {

// A step of the classic route: 1 or 0 with its code.
template <typename Step>
int TakeStep(SessionState* state, Step step) {
  return Door(state, [&](SessionState& open) {
    sorrelin::ObjectLoader objects = open.Objects();
    ClassicRoute route(objects, open.m_Facts, open.m_pReader->table_entries_left);
    return open.Report(step(route)) ? 1 : 0;
  });
}

}  // namespace

DWORD CCreatePDF::BuildObjectListFromFile() {
  return Door(m_pState, [](SessionState& state) {
    sorrelin::Opening opening(*state.m_pReader, state.m_Objects, state.m_Pages, state.m_Facts);
    return state.Report(opening.Run()) ? state.m_Objects.rows_in_document() : DWORD{0};
  });
}

DWORD CCreatePDF::BuildObjectListFromTrailer(DWORD* pPrev) {
  return static_cast<DWORD>(
      TakeStep(m_pState, [&](ClassicRoute& route) { return route.ReadTrailer(pPrev); }));
}

int CCreatePDF::BuildObjectListFromXrefTable(DWORD nOffset, int bOlder) {
  return TakeStep(m_pState,
                  [&](ClassicRoute& route) { return route.ReadTable(nOffset, bOlder != 0); });
}

int CCreatePDF::ReadPrevFlag(DWORD* pPrev) {
  return TakeStep(m_pState, [&](ClassicRoute& route) { return route.ReadPrev(pPrev); });
}

DWORD CCreatePDF::GetRealObjectNumber(DWORD nOffset) {
  return Door(m_pState, [&](SessionState& state) {
    DWORD number = 0;
    state.Report(sorrelin::ReadObjectNumber(state.m_pReader->file, nOffset, number));
    return number;
  });
}

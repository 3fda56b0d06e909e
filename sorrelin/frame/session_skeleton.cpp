// Doors of the session: the objects around the images.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/writer/skeleton.h>

using sorrelin::ObjectWriter;
using sorrelin::SessionState;

namespace {

// Work that writes one object and says what became of it.
template <typename Work>
DWORD ObjectDoor(SessionState* state, Work work) {
  return sorrelin::Door(state, [&](SessionState& open) {
    ObjectWriter out = open.Document().Writer();
    return open.Take(work(open, out));
  });
}

}  // namespace

int CCreatePDF::WritePDFHeader(char const* szTitle, char const* szCreator) {
  return sorrelin::Door(m_pState, [&](SessionState& state) {
    // Kept: without a creator the wide banner goes through a narrow format and ends at the high
    // byte of its first character.
    char const first_of_banner[] = {static_cast<char>(state.m_szCreator[0]), '\0'};
    char const* const creator = szCreator != nullptr ? szCreator : first_of_banner;
    sorrelin::InfoDigits const info(*state.m_pReader);
    ObjectWriter out = state.Document().Writer();
    return state.Report(WriteHeader(out, szTitle, creator, info)) ? 1 : 0;
  });
}

DWORD CCreatePDF::CreateOutlinesObject(DWORD nCount) {
  return ObjectDoor(m_pState, [&](SessionState& state, ObjectWriter& out) {
    return WriteOutlines(out, state.m_Facts, nCount);
  });
}

DWORD CCreatePDF::CreatePagesRootObject() {
  return ObjectDoor(m_pState, [](SessionState& state, ObjectWriter& out) {
    return WritePagesRoot(out, state.m_Facts, state.m_Pages);
  });
}

DWORD CCreatePDF::CreatePageObject(DWORD nParent, int nResourceType, DWORD nResourceObject,
                                   DWORD nProcSetObject, char const* szResourceName, POINT ptSize) {
  sorrelin::PageObject const page{nParent,        nResourceType,  nResourceObject,
                                  nProcSetObject, szResourceName, ptSize};
  return ObjectDoor(m_pState, [&](SessionState& state, ObjectWriter& out) {
    return WritePage(out, state.m_Pages, page);
  });
}

DWORD CCreatePDF::CreateProcSetObject(int nImageType, int bText) {
  return ObjectDoor(m_pState, [&](SessionState&, ObjectWriter& out) {
    return WriteProcSet(out, nImageType, bText != 0);
  });
}

DWORD CCreatePDF::CreateFontObject() {
  return ObjectDoor(m_pState, [](SessionState&, ObjectWriter& out) { return WriteFont(out); });
}

DWORD CCreatePDF::CreateCatalogObject(DWORD nPagesRoot, DWORD nOutlines) {
  return ObjectDoor(m_pState, [&](SessionState& state, ObjectWriter& out) {
    return WriteCatalog(out, state.m_Facts, nPagesRoot, nOutlines);
  });
}

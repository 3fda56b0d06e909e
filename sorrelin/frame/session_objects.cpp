// Doors of the session: objects, lines and streams as bytes, and the numbers of objects.
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>

using sorrelin::Body;
using sorrelin::Door;
using sorrelin::LineEnd;
using sorrelin::ObjectWriter;
using sorrelin::SessionState;
using sorrelin::WriterDoor;

namespace {

Body BodyOf(int dictionary) { return dictionary != 0 ? Body::kDictionary : Body::kPlain; }
LineEnd EndOf(int end) { return end != 0 ? LineEnd::kWritten : LineEnd::kNone; }

}  // namespace

DWORD CCreatePDF::ObjectStart(int bDict, int bEol) {
  return WriterDoor(m_pState,
                    [&](ObjectWriter& out) { return out.Start(BodyOf(bDict), EndOf(bEol)); });
}

DWORD CCreatePDF::ObjectStart(DWORD nObject, int bDict, int bEol) {
  return WriterDoor(
      m_pState, [&](ObjectWriter& out) { return out.Start(nObject, BodyOf(bDict), EndOf(bEol)); });
}

DWORD CCreatePDF::ObjectStartNewGen(DWORD nObject, int bDict, int bEol, int bNewGeneration) {
  return WriterDoor(m_pState, [&](ObjectWriter& out) {
    return out.Restart(nObject, BodyOf(bDict), EndOf(bEol), bNewGeneration != 0);
  });
}

int CCreatePDF::ObjectEnd(int bDict) {
  return static_cast<int>(WriterDoor(m_pState, [&](ObjectWriter& out) {
    out.End(BodyOf(bDict));
    return DWORD{1};
  }));
}

int CCreatePDF::ObjectExistsAlready(DWORD nObject) {
  return Door(m_pState,
              [&](SessionState& state) { return state.m_Objects.IsTaken(nObject) ? 1 : 0; });
}

DWORD CCreatePDF::GetCurrentObject() {
  return Door(m_pState, [](SessionState& state) { return state.m_Output.current_object; });
}

void CCreatePDF::SetCurrentObject(DWORD nObject) {
  Door(m_pState, [&](SessionState& state) { state.m_Output.current_object = nObject; });
}

DWORD CCreatePDF::GetNextObject() {
  return Door(m_pState, [](SessionState& state) { return state.m_Output.NextObject(); });
}

DWORD CCreatePDF::ReserveOneObject() {
  return WriterDoor(m_pState, [](ObjectWriter& out) { return out.Reserve(); });
}

DWORD CCreatePDF::ReservePagesRootObject() {
  return Door(m_pState, [](SessionState& state) { return state.ReservePagesRoot(); });
}

DWORD CCreatePDF::BeginStream() {
  return WriterDoor(m_pState, [](ObjectWriter& out) { return out.BeginStream(); });
}

int CCreatePDF::EndStream() {
  return static_cast<int>(WriterDoor(m_pState, [](ObjectWriter& out) {
    out.EndStream();
    return DWORD{1};
  }));
}

void CCreatePDF::MarkStreamBegining() {
  Door(m_pState, [](SessionState& state) { state.m_Output.MarkStreamBegin(); });
}

void CCreatePDF::MarkStreamEnd() {
  Door(m_pState, [](SessionState& state) { state.m_Output.MarkStreamEnd(); });
}

DWORD CCreatePDF::GetStreamLength() {
  return Door(m_pState, [](SessionState& state) { return state.m_Output.StreamLength(); });
}

DWORD CCreatePDF::WriteStreamLengthObject() {
  return WriterDoor(m_pState, [](ObjectWriter& out) { return out.WriteStreamLength(); });
}

DWORD CCreatePDF::WriteDataStreamObject(void* hData, DWORD nBytes) {
  PDF_SetLastError(PDF_ERROR_NONE);
  return WriterDoor(m_pState,
                    [&](ObjectWriter& out) { return out.WriteDataStream(hData, nBytes); });
}

int CCreatePDF::WriteToPDFFile(char const* szText, int bEol) {
  return static_cast<int>(WriterDoor(m_pState, [&](ObjectWriter& out) {
    out.Put(szText, EndOf(bEol));
    return out.output().use_char13 != 0 ? DWORD{2} : DWORD{1};
  }));
}

DWORD CCreatePDF::WriteRawDataToPDFFile(BYTE const* pData, DWORD nBytes) {
  return WriterDoor(m_pState, [&](ObjectWriter& out) { return out.Bytes(pData, nBytes); });
}

DWORD CCreatePDF::WriteEolToPDFFile() {
  return WriterDoor(m_pState, [](ObjectWriter& out) { return out.EndLine(); });
}

void CCreatePDF::SetChar13(int bUseChar13) {
  Door(m_pState, [&](SessionState& state) { state.m_Output.use_char13 = bUseChar13; });
}

int CCreatePDF::UseChar13() {
  return Door(m_pState, [](SessionState& state) { return state.m_Output.use_char13; });
}

void CCreatePDF::InitObjectList() {
  Door(m_pState, [](SessionState& state) {
    state.m_Objects.Clear();
    state.m_pReader->file.Forget();
  });
}

void CCreatePDF::InitPageObjectsList() {
  Door(m_pState, [](SessionState& state) { state.m_Pages.Clear(); });
}

DWORD CCreatePDF::GetPageObjectNumber(DWORD nPage) {
  return Door(m_pState, [&](SessionState& state) { return state.m_Pages[nPage]; });
}

DWORD CCreatePDF::GetCurrentPageNumber() {
  return Door(m_pState, [](SessionState& state) { return state.m_Output.pages_added; });
}

DWORD CCreatePDF::GetNumberOfPages() { return GetTotalPageNumber(); }

DWORD CCreatePDF::GetTotalPageNumber() {
  return Door(m_pState, [](SessionState const& state) { return state.m_Pages.count(); });
}

DWORD CCreatePDF::GetCatalogObjectNr() {
  return Door(m_pState, [](SessionState& state) { return state.m_Facts.catalog; });
}

DWORD CCreatePDF::GetOutlinesObjectNr() {
  return Door(m_pState, [](SessionState& state) { return state.m_Facts.outlines; });
}

DWORD CCreatePDF::GetPagesRootObjectNr() {
  return Door(m_pState, [](SessionState& state) { return state.m_Facts.pages_root; });
}

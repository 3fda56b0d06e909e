// Doors of the session: objects, lines and streams as bytes; documents created, finished and
// closed.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>

using sorrelin::Door;
using sorrelin::SessionState;

DWORD CCreatePDF::ObjectStart(int bDict, int bEol) {
  return Door(m_pState, [&](SessionState& state) { return state.ObjectStart(bDict, bEol); });
}

DWORD CCreatePDF::ObjectStart(DWORD nObject, int bDict, int bEol) {
  return Door(m_pState,
              [&](SessionState& state) { return state.ObjectStart(nObject, bDict, bEol); });
}

DWORD CCreatePDF::ObjectStartNewGen(DWORD nObject, int bDict, int bEol, int bNewGeneration) {
  return Door(m_pState, [&](SessionState& state) {
    return state.ObjectStartNewGen(nObject, bDict, bEol, bNewGeneration);
  });
}

int CCreatePDF::ObjectEnd(int bDict) {
  return Door(m_pState, [&](SessionState& state) { return state.ObjectEnd(bDict); });
}

int CCreatePDF::ObjectExistsAlready(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) { return state.ObjectExistsAlready(nObject); });
}

DWORD CCreatePDF::GetCurrentObject() {
  return Door(m_pState, [](SessionState& state) { return state.GetCurrentObject(); });
}

void CCreatePDF::SetCurrentObject(DWORD nObject) {
  return Door(m_pState, [&](SessionState& state) { return state.SetCurrentObject(nObject); });
}

DWORD CCreatePDF::GetNextObject() {
  return Door(m_pState, [](SessionState& state) { return state.GetNextObject(); });
}

DWORD CCreatePDF::ReserveOneObject() {
  return Door(m_pState, [](SessionState& state) { return state.ReserveOneObject(); });
}

DWORD CCreatePDF::ReservePagesRootObject() {
  return Door(m_pState, [](SessionState& state) { return state.ReservePagesRootObject(); });
}

DWORD CCreatePDF::BeginStream() {
  return Door(m_pState, [](SessionState& state) { return state.BeginStream(); });
}

int CCreatePDF::EndStream() {
  return Door(m_pState, [](SessionState& state) { return state.EndStream(); });
}

void CCreatePDF::MarkStreamBegining() {
  return Door(m_pState, [](SessionState& state) { return state.MarkStreamBegining(); });
}

void CCreatePDF::MarkStreamEnd() {
  return Door(m_pState, [](SessionState& state) { return state.MarkStreamEnd(); });
}

DWORD CCreatePDF::GetStreamLength() {
  return Door(m_pState, [](SessionState& state) { return state.GetStreamLength(); });
}

DWORD CCreatePDF::WriteStreamLengthObject() {
  return Door(m_pState, [](SessionState& state) { return state.WriteStreamLengthObject(); });
}

DWORD CCreatePDF::WriteDataStreamObject(void* hData, DWORD nBytes) {
  return Door(m_pState,
              [&](SessionState& state) { return state.WriteDataStreamObject(hData, nBytes); });
}

int CCreatePDF::WriteToPDFFile(char const* szText, int bEol) {
  return Door(m_pState, [&](SessionState& state) { return state.WriteToPDFFile(szText, bEol); });
}

DWORD CCreatePDF::WriteRawDataToPDFFile(BYTE const* pData, DWORD nBytes) {
  return Door(m_pState,
              [&](SessionState& state) { return state.WriteRawDataToPDFFile(pData, nBytes); });
}

DWORD CCreatePDF::WriteEolToPDFFile() {
  return Door(m_pState, [](SessionState& state) { return state.WriteEolToPDFFile(); });
}

void CCreatePDF::SetChar13(int bUseChar13) {
  return Door(m_pState, [&](SessionState& state) { return state.SetChar13(bUseChar13); });
}

int CCreatePDF::UseChar13() {
  return Door(m_pState, [](SessionState& state) { return state.UseChar13(); });
}

void CCreatePDF::InitObjectList() {
  return Door(m_pState, [](SessionState& state) { return state.InitObjectList(); });
}

void CCreatePDF::InitPageObjectsList() {
  return Door(m_pState, [](SessionState& state) { return state.InitPageObjectsList(); });
}

DWORD CCreatePDF::GetPageObjectNumber(DWORD nPage) {
  return Door(m_pState, [&](SessionState& state) { return state.GetPageObjectNumber(nPage); });
}

DWORD CCreatePDF::GetCurrentPageNumber() {
  return Door(m_pState, [](SessionState& state) { return state.GetCurrentPageNumber(); });
}

DWORD CCreatePDF::GetNumberOfPages() {
  return Door(m_pState, [](SessionState& state) { return state.GetNumberOfPages(); });
}

DWORD CCreatePDF::GetTotalPageNumber() {
  return Door(m_pState, [](SessionState& state) { return state.GetTotalPageNumber(); });
}

DWORD CCreatePDF::GetCatalogObjectNr() {
  return Door(m_pState, [](SessionState& state) { return state.GetCatalogObjectNr(); });
}

DWORD CCreatePDF::GetOutlinesObjectNr() {
  return Door(m_pState, [](SessionState& state) { return state.GetOutlinesObjectNr(); });
}

DWORD CCreatePDF::GetPagesRootObjectNr() {
  return Door(m_pState, [](SessionState& state) { return state.GetPagesRootObjectNr(); });
}

int CCreatePDF::CreatePDF(char const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return state.CreatePDF(szFileName); });
}

int CCreatePDF::CreatePDFW(WCHAR const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return state.CreatePDFW(szFileName); });
}

int CCreatePDF::CreatePDFFile(char const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return state.CreatePDFFile(szFileName); });
}

int CCreatePDF::CreatePDFFileW(WCHAR const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return state.CreatePDFFileW(szFileName); });
}

int CCreatePDF::CreatePDFInMemory(int64_t pAppendTo, DWORD nSize) {
  return Door(m_pState,
              [&](SessionState& state) { return state.CreatePDFInMemory(pAppendTo, nSize); });
}

int CCreatePDF::CreatePDFFileInMemory(int64_t pAppendTo, DWORD nSize) {
  return Door(m_pState,
              [&](SessionState& state) { return state.CreatePDFFileInMemory(pAppendTo, nSize); });
}

int CCreatePDF::WriteXref() {
  return Door(m_pState, [](SessionState& state) { return state.WriteXref(); });
}

int CCreatePDF::FinishPDF() {
  return Door(m_pState, [](SessionState& state) { return state.FinishPDF(); });
}

int CCreatePDF::FinishPDFInMemory(int64_t* ppData, DWORD* pSize) {
  return Door(m_pState,
              [&](SessionState& state) { return state.FinishPDFInMemory(ppData, pSize); });
}

void CCreatePDF::ClosePDFFile() {
  return Door(m_pState, [](SessionState& state) { return state.ClosePDFFile(); });
}

void CCreatePDF::ClosePDFFileInMemory(int64_t* ppData, DWORD* pSize) {
  return Door(m_pState,
              [&](SessionState& state) { return state.ClosePDFFileInMemory(ppData, pSize); });
}

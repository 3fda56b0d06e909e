// Doors of the session: documents created, finished and closed, new or updated.
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/writer/banner.h>
#include <sorrelin/writer/checkpoint.h>
#include <sorrelin/writer/cross_reference.h>
#include <sorrelin/writer/finish.h>
#include <sorrelin/writer/skeleton.h>
#include <sorrelin/writer/target.h>
#include <sorrelin/writer/update.h>

using sorrelin::Door;
using sorrelin::Draft;
using sorrelin::ObjectWriter;
using sorrelin::SessionState;
using sorrelin::Status;
using sorrelin::ToWide;

namespace {

bool TakeTarget(SessionState& state, sorrelin::Target target) {
  state.m_Update.active = target.update ? 1 : 0;
  if (target.update) state.m_Update.first_page = 1;
  state.TakeChannel(target.channel, sorrelin::DocumentFile::Growth::kGrows);
  return target.channel != sorrelin::InvalidChannel() ||
         state.Report(Status::Failed(PDF_ERROR_SYSTEM));
}

bool OpenFile(SessionState& state, WCHAR const* name) {
  state.CloseOpenDocument();
  return TakeTarget(state, sorrelin::OpenFileTarget(name));
}

bool OpenMemory(SessionState& state, int64_t document, DWORD size) {
  state.CloseOpenDocument();
  return TakeTarget(state,
                    sorrelin::OpenMemoryTarget(reinterpret_cast<void const*>(document), size));
}

Status WriteFirstObjects(SessionState& state, sorrelin::InfoDigits const& info) {
  return WithCheckpoint(state.Document(), [&] {
    ObjectWriter out = state.Document().Writer();
    Status const header = sorrelin::WriteHeader(out, nullptr, sorrelin::kNarrowCreator, info);
    return header.ok() ? WriteOutlines(out, state.m_Facts, 0).status() : header;
  });
}

bool StartDocument(SessionState& state, sorrelin::InfoDigits const& info) {
  return state.Report(state.m_Update.active != 0 ? BeginUpdate(state.Document())
                                                 : WriteFirstObjects(state, info));
}

bool CreateFile(SessionState& state, WCHAR const* name) {
  state.m_nLastError = PDF_ERROR_NONE;
  sorrelin::InfoDigits const info(*state.m_pReader);
  if (!OpenFile(state, name) || !StartDocument(state, info)) return false;
  return state.m_Update.active != 0 || state.ReservePagesRoot() != 0;
}

// Kept: an update in memory reserves a new pages root too, unlike an update of a file.
bool CreateInMemory(SessionState& state, int64_t document, DWORD size) {
  state.m_nLastError = PDF_ERROR_NONE;
  sorrelin::InfoDigits const info(*state.m_pReader);
  if (!OpenMemory(state, document, size) || !StartDocument(state, info)) return false;
  return state.ReservePagesRoot() != 0;
}

bool WriteEnd(SessionState& state) {
  Draft const draft = state.Document();
  return state.Report(WithCheckpoint(draft, [&] { return WriteDocumentEnd(draft); }));
}

}  // namespace

int CCreatePDF::CreatePDF(char const* szFileName) {
  return Door(m_pState, [&](SessionState& state) {
    return CreateFile(state, ToWide(szFileName).c_str()) ? 1 : 0;
  });
}

int CCreatePDF::CreatePDFW(WCHAR const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return CreateFile(state, szFileName) ? 1 : 0; });
}

int CCreatePDF::CreatePDFFile(char const* szFileName) {
  return Door(m_pState, [&](SessionState& state) {
    return OpenFile(state, ToWide(szFileName).c_str()) ? 1 : 0;
  });
}

int CCreatePDF::CreatePDFFileW(WCHAR const* szFileName) {
  return Door(m_pState, [&](SessionState& state) { return OpenFile(state, szFileName) ? 1 : 0; });
}

int CCreatePDF::CreatePDFInMemory(int64_t pAppendTo, DWORD nSize) {
  return Door(m_pState,
              [&](SessionState& state) { return CreateInMemory(state, pAppendTo, nSize) ? 1 : 0; });
}

int CCreatePDF::CreatePDFFileInMemory(int64_t pAppendTo, DWORD nSize) {
  return Door(m_pState,
              [&](SessionState& state) { return OpenMemory(state, pAppendTo, nSize) ? 1 : 0; });
}

int CCreatePDF::WriteXref() {
  return Door(m_pState, [](SessionState& state) {
    ObjectWriter out = state.Document().Writer();
    return state.Report(
               WriteCrossReference(out, state.m_Facts, sorrelin::EntryRoom(state.m_Output)))
               ? 1
               : 0;
  });
}

int CCreatePDF::FinishPDF() {
  return Door(m_pState, [](SessionState& state) {
    if (!WriteEnd(state)) return 0;
    state.Close();
    return 1;
  });
}

int CCreatePDF::FinishPDFInMemory(int64_t* ppData, DWORD* pSize) {
  return Door(m_pState, [&](SessionState& state) {
    if (!WriteEnd(state)) return 0;
    state.CloseTake(ppData, pSize);
    return 1;
  });
}

void CCreatePDF::ClosePDFFile() {
  Door(m_pState, [](SessionState& state) { state.Close(); });
}

void CCreatePDF::ClosePDFFileInMemory(int64_t* ppData, DWORD* pSize) {
  Door(m_pState, [&](SessionState& state) { state.CloseTake(ppData, pSize); });
}

int CCreatePDF::CreatePagesRootObjectForAppend() {
  return Door(m_pState, [](SessionState& state) {
    return state.Report(WriteUpdatedPagesRoot(state.Document())) ? 1 : 0;
  });
}

int CCreatePDF::WriteXrefForAppend() {
  return Door(m_pState, [](SessionState& state) {
    return state.Report(
               WriteUpdatedCrossReference(state.Document(), sorrelin::EntryRoom(state.m_Output)))
               ? 1
               : 0;
  });
}

void CCreatePDF::InitAppendedPageObjectsList() {
  Door(m_pState, [](SessionState& state) { state.m_Update.pages.Clear(); });
}

// Opens the target of a write session and ends it with the pages root, the catalog and the
// cross-reference section.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/banner.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/frame/trace.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>

#include <string>

using sorrelin::ToWide;

namespace {

constexpr DWORD kTargetFlags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN;

bool NameExists(WCHAR const* name) { return GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES; }

}  // namespace

int sorrelin::SessionState::CreatePDF(char const* szFileName) {
  return CreatePDFW(ToWide(szFileName).c_str());
}

int sorrelin::SessionState::CreatePDFW(WCHAR const* szFileName) {
  sorrelin::Trace(SORRELIN_TEXT("CreatePDF start, szFileName = %s"));
  PDF_SetLastError(PDF_ERROR_NONE);
  if (CreatePDFFileW(szFileName) == 0 || !StartDocument()) return 0;
  if (m_bAppendMode == 0) ReservePagesRootObject();
  return 1;
}

int sorrelin::SessionState::CreatePDFFile(char const* szFileName) {
  return CreatePDFFileW(ToWide(szFileName).c_str());
}

int sorrelin::SessionState::CreatePDFFileW(WCHAR const* szFileName) {
  CloseOpenDocument();
  // Kept: a name that exists is updated; it is neither refused nor replaced.
  bool const exists = NameExists(szFileName);
  EnterMode(exists);
  return TakeChannel(sorrelin::ChannelOpenFile(
      szFileName, exists ? GENERIC_READ | GENERIC_WRITE : GENERIC_WRITE, FILE_SHARE_READ, nullptr,
      exists ? OPEN_EXISTING : CREATE_ALWAYS, kTargetFlags, nullptr));
}

int sorrelin::SessionState::CreatePDFInMemory(int64_t pAppendTo, DWORD nSize) {
  PDF_SetLastError(PDF_ERROR_NONE);
  if (CreatePDFFileInMemory(pAppendTo, nSize) == 0 || !StartDocument()) return 0;
  // Kept: an update in memory reserves a new pages root too, unlike an update of a file.
  ReservePagesRootObject();
  return 1;
}

int sorrelin::SessionState::CreatePDFFileInMemory(int64_t pAppendTo, DWORD nSize) {
  CloseOpenDocument();
  EnterMode(pAppendTo != 0);
  void const* const document = reinterpret_cast<void const*>(pAppendTo);
  return TakeChannel(pAppendTo != 0 ? sorrelin::ChannelAttachMemory(document, nSize, false)
                                    : sorrelin::ChannelOpenMemory(nSize));
}

void sorrelin::SessionState::CloseOpenDocument() {
  if (sorrelin::IsUsableChannel(m_hFile)) ClosePDFFile();
}

void sorrelin::SessionState::EnterMode(bool update) {
  m_bAppendMode = update ? 1 : 0;
  if (update) m_bFirstAppendedPage = 1;
}

int sorrelin::SessionState::TakeChannel(sorrelin::FileChannel* pChannel) {
  m_hFile = pChannel;
  m_pReader->file.SetChannel(pChannel, sorrelin::DocumentFile::Growth::kGrows);
  return pChannel != sorrelin::InvalidChannel() ? 1 : static_cast<int>(Fail(PDF_ERROR_SYSTEM));
}

bool sorrelin::SessionState::StartDocument() {
  if (m_bAppendMode != 0) return StartUpdate();
  std::string const creator = std::string("PDF Printer Driver, ") + sorrelin::kNarrowBanner;
  return WritePDFHeader(nullptr, creator.c_str()) != 0 && CreateOutlinesObject(0) != 0;
}

int sorrelin::SessionState::FinishPDF() {
  if (!FinishObjects()) return 0;
  ClosePDFFile();
  return 1;
}

int sorrelin::SessionState::FinishPDFInMemory(int64_t* ppData, DWORD* pSize) {
  if (!FinishObjects()) return 0;
  ClosePDFFileInMemory(ppData, pSize);
  return 1;
}

bool sorrelin::SessionState::FinishObjects() {
  bool const update = m_bAppendMode != 0;
  if ((update ? CreatePagesRootObjectForAppend() : static_cast<int>(CreatePagesRootObject())) ==
      0) {
    return false;
  }
  return CreateCatalogObject(GetPagesRootObjectNr(), GetOutlinesObjectNr()) != 0 &&
         (update ? WriteXrefForAppend() : WriteXref()) != 0;
}

void sorrelin::SessionState::ClosePDFFile() {
  m_pReader->objects.Close();
  if (m_hFile == sorrelin::InvalidChannel()) return;
  sorrelin::ChannelClose(m_hFile);
  ForgetChannel();
}

void sorrelin::SessionState::ClosePDFFileInMemory(int64_t* ppData, DWORD* pSize) {
  m_pReader->objects.Close();
  if (m_hFile == sorrelin::InvalidChannel()) return;
  sorrelin::ChannelCloseTake(m_hFile, ppData, pSize);
  ForgetChannel();
}

void sorrelin::SessionState::ForgetChannel() {
  m_hFile = sorrelin::InvalidChannel();
  m_pReader->file.SetChannel(m_hFile, sorrelin::DocumentFile::Growth::kGrows);
}

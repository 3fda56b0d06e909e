// Updates of existing documents: new pages go behind the old bytes; a rewritten pages root, a new
// catalog and a whole new table follow. Nothing of the old bytes changes.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/opening.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/writer/pages_root_text.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace {

constexpr DWORD kTypeInObjectStream = 2;

}  // namespace

// Reads the document, and takes the numbers that the update continues from.
bool sorrelin::SessionState::StartUpdate() {
  bool const read = Report(sorrelin::Opening(*m_pReader, m_Objects, m_Pages, m_Facts).Run());
  if (!read || m_Objects.rows_in_document() == 0 || !RefuseObjectStreams()) return false;
  m_nOldCatalogObject = m_Facts.catalog;
  m_nOldPagesRootObject = m_Facts.pages_root;
  m_nAppendedPages = 0;
  InitAppendedPageObjectsList();
  m_nCurrentObject = m_Objects.rows_in_document() - 1;
  return true;
}

// The classic table of an update cannot list objects inside object streams.
bool sorrelin::SessionState::RefuseObjectStreams() {
  bool found = false;
  for (DWORD object = 0; object < m_Objects.rows_in_document(); ++object) {
    found |= m_Objects[object].bInUse == kTypeInObjectStream;
  }
  return !found || Fail(PDF_ERROR_VERSION) != 0;
}

void sorrelin::SessionState::InitAppendedPageObjectsList() {
  std::fill(std::begin(m_AppendedPageObjects), std::end(m_AppendedPageObjects), 0);
}

int sorrelin::SessionState::CreatePagesRootObjectForAppend() {
  std::string old_text;
  DWORD old_count = 0;
  if (!ReadOldPagesRoot(old_text) || !ReadOldPageCount(old_text, old_count)) return 0;
  DWORD const listed = std::min(m_nAppendedPages, kPageSlots);
  std::vector<DWORD> const pages(m_AppendedPageObjects, m_AppendedPageObjects + listed);
  std::optional<std::string> const text =
      sorrelin::PagesRootWithPages(old_text, old_count + m_nAppendedPages, pages);
  if (!text && sorrelin::HasPagesKeys(old_text)) return static_cast<int>(Fail(PDF_ERROR_READ));
  // Kept: in memory the root has a new number without a row, so the header is missing there; file
  // updates renew the old row.
  ObjectStartNewGen(m_Facts.pages_root, 0, 0, 0);
  if (!text) return static_cast<int>(Fail(PDF_ERROR_READ));
  return WriteToPDFFile(text->c_str(), 1) != 0 ? 1 : 0;
}

// The object's bytes; its last byte does not count.
bool sorrelin::SessionState::ReadOldPagesRoot(std::string& text) {
  DWORD const object = m_nOldPagesRootObject;
  DWORD const size = ObjectExistsAlready(object) != 0 ? Objects().SizeOf(object) : 0;
  if (size == 0) return false;
  text.resize(size);
  DWORD count = 0;
  LONG const offset = static_cast<LONG>(m_Objects[object].nOffset);
  LONG const end = static_cast<LONG>(m_nFilePos);
  if (sorrelin::ChannelSeek(m_hFile, offset, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER ||
      sorrelin::ChannelRead(m_hFile, text.data(), size, &count, nullptr) == 0 || count != size ||
      sorrelin::ChannelSeek(m_hFile, end, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
    return Fail(PDF_ERROR_SYSTEM) != 0;
  }
  text.back() = '\0';
  return true;
}

bool sorrelin::SessionState::ReadOldPageCount(std::string& text, DWORD& nCount) {
  std::span<BYTE> const bytes(reinterpret_cast<BYTE*>(text.data()), text.size());
  bool const read = Objects().ReadNumber(bytes, "Count", &nCount);
  return Report(read ? sorrelin::Status::Ok() : sorrelin::Status::Failed(PDF_ERROR_SYSTEM));
}

int sorrelin::SessionState::WriteXrefForAppend() {
  DWORD const table = ReserveOneObject();
  if (table == 0) return 0;
  m_Objects.Change(table).nOffset = m_nFilePos;
  bool const written =
      WriteToPDFFile("xref", 1) != 0 && WriteFormatted(1, "0 %d", static_cast<int>(table)) &&
      WriteUpdatedEntries(table) && WriteUpdatedTrailer(table) && WriteXrefOffset(table);
  return written ? 1 : 0;
}

bool sorrelin::SessionState::WriteUpdatedEntries(DWORD nTable) {
  std::string entries;
  for (DWORD object = 0; object < nTable; ++object) {
    ObjectEntry const row = m_Objects[object];
    bool const old_catalog = object == m_nOldCatalogObject;
    AddXrefEntry(entries, row.nOffset, row.nGeneration + (old_catalog ? 1 : 0),
                 row.bInUse != 0 && !old_catalog);
  }
  return WriteText(entries);
}

// Kept: /ID and /Encrypt go out as the reader cut them from the old trailer.
bool sorrelin::SessionState::WriteUpdatedTrailer(DWORD nTable) {
  return WriteLines({"trailer", "<<"}) && WriteFormatted(1, "/Size %d", static_cast<int>(nTable)) &&
         WriteFormatted(1, "/Root %d 0 R", static_cast<int>(GetCatalogObjectNr())) &&
         (m_Facts.info == 0 || WriteFormatted(1, "/Info %d %d R", static_cast<int>(m_Facts.info),
                                              static_cast<int>(m_Facts.info_generation))) &&
         (*m_Facts.trailer_id == 0 || WriteToPDFFile(m_Facts.trailer_id, 1) != 0) &&
         (*m_Facts.trailer_encrypt == 0 || WriteToPDFFile(m_Facts.trailer_encrypt, 1) != 0) &&
         WriteToPDFFile(">>", 1) != 0;
}

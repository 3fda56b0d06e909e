// The one door through which an existing document becomes known to a session: object table,
// catalog, page list and information strings.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/document/id_key.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_fetch.h>
#include <sorrelin/document/object_stream.h>
#include <sorrelin/document/start_xref.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/file.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>

using sorrelin::CXRefStm;
using sorrelin::LoadedObject;

namespace {

constexpr DWORD kTailBytes = 50;

// Sets the work that the fetches of an opening may do, and lifts the bound at its end.
class Opening {
 public:
  explicit Opening(sorrelin::ReaderState& state) : state_(state) {
    state_.m_bOpening = true;
    state_.m_nWorkLeft = sorrelin::WorkFor(state_);
  }
  ~Opening() {
    state_.m_bOpening = false;
    state_.m_nWorkLeft = UINT64_MAX;
  }
  Opening(Opening const&) = delete;
  Opening& operator=(Opening const&) = delete;

 private:
  sorrelin::ReaderState& state_;
};

}  // namespace

// Where the work is used up, fetches yield nothing; rather than leave out pages and strings the
// opening fails.
DWORD sorrelin::SessionState::BuildObjectListFromFile() {
  Opening const opening(*m_pReader);
  DWORD const objects = ReadObjectList();
  return m_pReader->m_nWorkLeft != 0 ? objects : Fail(PDF_ERROR_SYSTEM);
}

DWORD sorrelin::SessionState::ReadObjectList() {
  DWORD start = 0;
  if (!FindStartXref(start)) return 0;
  m_nMaxSectionOffset = 0;
  m_nObjectsInFile = 0;
  sorrelin::DestroyReaderObjects(*m_pReader);
  m_pReader->m_pObjectStreams = new sorrelin::ObjectStreamList(m_pReader.get());
  CXRefStm* const xref = m_pReader->m_pXRef = new CXRefStm(m_pReader.get());
  xref->SetFile(m_hFile);
  xref->ReadStartXref();
  bool const classic = xref->IsClassicTableAt(nullptr) != 0;
  m_pReader->m_bStreamIndex = classic ? 0 : 1;
  bool const read = classic ? ReadClassicSections(start) : ReadStreamSections(*xref);
  if (!read || !ReadCatalog() || !ReadPagesRoot()) return 0;
  ReadInfoStrings();
  return m_nObjectsInFile;
}

// The number behind "startxref", which must stand in the document's last bytes.
bool sorrelin::SessionState::FindStartXref(DWORD& nOffset) {
  char tail[kTailBytes];
  DWORD count = 0;
  LONG const target = -static_cast<LONG>(kTailBytes);
  if (sorrelin::ChannelSeek(m_hFile, target, nullptr, FILE_END) == INVALID_SET_FILE_POINTER ||
      !sorrelin::ChannelRead(m_hFile, tail, kTailBytes, &count, nullptr) || count != kTailBytes) {
    return Fail(PDF_ERROR_SYSTEM) != 0;
  }
  std::replace(tail, tail + kTailBytes, '\0', '_');
  auto const number = sorrelin::NumberBehindStartXref({tail, kTailBytes - 1});
  if (!number) return Fail(PDF_ERROR_NOT_PDF) != 0;
  nOffset = static_cast<DWORD>(*number);
  return true;
}

// Newest section first; older ones fill the rows that it leaves free.
bool sorrelin::SessionState::ReadClassicSections(DWORD nStart) {
  DWORD prev = 0;
  if (BuildObjectListFromXrefTable(nStart, 0) == 0) return false;
  if (BuildObjectListFromTrailer(&prev) == 0) return false;
  for (std::set<DWORD> seen{nStart}; prev != 0 && seen.insert(prev).second;) {
    if (BuildObjectListFromXrefTable(prev, 1) == 0 || ReadPrevFlag(&prev) == 0) return false;
  }
  return true;
}

bool sorrelin::SessionState::ReadStreamSections(CXRefStm& xref) {
  if (!ReadStreamChain(xref)) return xref.IsTooLarge() ? Fail(PDF_ERROR_MEMORY) != 0 : false;
  xref.FinishExtents();
  xref.ReleaseSection();
  TakeStreamIndex(xref);
  return true;
}

bool sorrelin::SessionState::ReadStreamChain(CXRefStm& xref) {
  sorrelin::DocumentId id;
  if (xref.LoadSection(false, false) == 0 || sorrelin::ReadIdKey(xref.SectionText(), id) == 0 ||
      xref.ReadTrailerKeys() == 0 || !ReadStreamSection(xref)) {
    return false;
  }
  // Sections do not overlap, so that all of them together are no larger than the document.
  uint64_t left = sorrelin::ChannelGetSize(m_hFile, nullptr) - xref.SectionText().size();
  std::set<uint64_t> seen{static_cast<DWORD>(xref.StartXref())};
  while (xref.Prev() != 0 && seen.insert(xref.Prev()).second) {
    if (xref.LoadSection(false, true) == 0 || xref.SectionText().size() > left) return false;
    left -= xref.SectionText().size();
    xref.Prev() = 0;
    if (!ReadStreamSection(xref)) return false;
  }
  return true;
}

bool sorrelin::SessionState::ReadStreamSection(CXRefStm& xref) {
  return xref.ParseStreamDict() != 0 && xref.DecodeRecords() != 0 && xref.MergeRecords() != 0;
}

void sorrelin::SessionState::TakeStreamIndex(CXRefStm& xref) {
  static_assert(sorrelin::kIndexRows == kObjectRows);
  auto const& index = xref.ObjectIndex();
  m_nMaxSectionOffset = static_cast<DWORD>(xref.StartXref());
  m_nObjectsInFile = static_cast<DWORD>(index.size());
  m_nTrailerSize = m_nObjectsInFile;
  for (size_t i = 0; i < index.size(); ++i) {
    m_Objects[i] = {static_cast<DWORD>(index[i].nOffset), index[i].nGeneration, index[i].nType};
  }
  m_pReader->m_Offsets.Clear();
  sorrelin::ObjectId const none;
  sorrelin::ObjectId const& root = xref.Root() != nullptr ? *xref.Root() : none;
  sorrelin::ObjectId const& info = xref.Info() != nullptr ? *xref.Info() : none;
  m_nCatalogObject = root.nNumber;
  m_nCatalogGeneration = root.nGeneration;
  m_nInfoObject = info.nNumber;
  m_nInfoGeneration = info.nGeneration;
}

bool sorrelin::SessionState::ReadCatalog() {
  LoadedObject const catalog(LoadObject(m_nCatalogObject));
  if (catalog.data() == nullptr) return false;
  DWORD generation = 0;
  if (GetValue(catalog.data(), catalog.size(), "Pages", &m_nPagesRootObject, &generation) == 0) {
    return Fail(PDF_ERROR_SYSTEM) != 0;
  }
  DWORD outlines = 0;
  int const found = GetValue(catalog.data(), catalog.size(), "Outlines", &outlines, &generation);
  m_nOutlinesObject = found != 0 ? outlines : 0;
  return true;
}

bool sorrelin::SessionState::ReadPagesRoot() {
  LoadedObject const root(LoadObject(m_nPagesRootObject));
  if (root.data() == nullptr) return false;
  if (!ReadPageCount(root.data(), root.size())) return Fail(PDF_ERROR_SYSTEM) != 0;
  m_pReader->m_nPageCounter = 0;
  return ParseKids(root.data(), root.size()) != 0 || Fail(PDF_ERROR_SYSTEM) != 0;
}

// Kept: a count by reference is refused where its number can be read, so that such documents fail;
// only one whose number cannot be read is followed.
bool sorrelin::SessionState::ReadPageCount(BYTE* pData, DWORD nSize) {
  if (IsReference(pData, nSize, "Count") == 0) {
    return GetValue(pData, nSize, "Count", &m_nTotalPages) != 0;
  }
  DWORD number = 0;
  DWORD generation = 0;
  if (GetValue(pData, nSize, "Count", &number, &generation) != 0) return false;
  return GetValueFromReference(number, &m_nTotalPages) != 0;
}

void sorrelin::SessionState::ReadInfoStrings() {
  LoadedObject const info(LoadObject(m_nInfoObject));
  if (info.data() == nullptr) return;
  ReadInfoString(info.data(), info.size(), "/Title", m_pReader->m_Title);
  ReadInfoString(info.data(), info.size(), "/Author", m_pReader->m_Author);
  ReadInfoString(info.data(), info.size(), "/Subject", m_pReader->m_Subject);
  ReadInfoString(info.data(), info.size(), "/Keywords", m_pReader->m_Keywords);
}

// A key that is absent leaves the string as it was.
void sorrelin::SessionState::ReadInfoString(BYTE* pData, DWORD nSize, char const* szKey,
                                            sorrelin::WideString& target) {
  WCHAR* value = nullptr;
  uint64_t length = 0;
  if (GetStringValue2W(pData, nSize, szKey, &value, &length) != 0 && value != nullptr) {
    target = value;
  }
  std::free(value);
}

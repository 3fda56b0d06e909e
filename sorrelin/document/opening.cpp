// The opening of a document for reading, or for an update.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/classic_route.h>
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/id_key.h>
#include <sorrelin/document/info_value.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/opening.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/page_tree.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/document/start_xref.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <set>
#include <string_view>

namespace sorrelin {

namespace {

constexpr DWORD kHeaderBytes = 8;
constexpr DWORD kTailBytes = 50;

bool ReadStreamSection(CXRefStm& xref) {
  return xref.ParseStreamDict() != 0 && xref.DecodeRecords() != 0 && xref.MergeRecords() != 0;
}

}  // namespace

Status ReadHeader(FileChannel* channel) {
  char header[kHeaderBytes];
  DWORD count = 0;
  bool const read = ChannelRead(channel, header, kHeaderBytes, &count, nullptr) != 0;
  if (!read || count != kHeaderBytes) return Status::Failed(PDF_ERROR_NOT_PDF);
  bool const supported = std::string_view(header, kHeaderBytes).starts_with("%PDF-1.") &&
                         header[7] >= '0' && header[7] <= '8';
  return supported ? Status::Ok() : Status::Failed(PDF_ERROR_VERSION);
}

Opening::Opening(ReaderState& reader, ObjectTable& table, PageList& pages, DocumentFacts& facts)
    : reader_(reader),
      table_(table),
      pages_(pages),
      facts_(facts),
      objects_(reader.file, reader.objects, table) {}

// Where the work is used up, fetches yield nothing; rather than leave out pages and strings the
// opening fails.
Status Opening::Run() {
  WorkBudget& work = reader_.file.work();
  reader_.file.TakeNote();
  WorkBudget::Opening const bound(work, ChannelGetSize(reader_.file.channel(), nullptr));
  Status const status = Read();
  return work.IsUsedUp() ? Status::Failed(PDF_ERROR_SYSTEM) : status;
}

Status Opening::Read() {
  Result<DWORD> const start = FindStartXref();
  if (!start.ok()) return start.status();
  facts_.max_section_offset = 0;
  table_.SetRowsInDocument(0);
  reader_.objects.Close();
  auto index = std::make_unique<CXRefStm>(reader_.file, &reader_.objects);
  CXRefStm& xref = *index;
  xref.ReadStartXref();
  bool const classic = xref.IsClassicTableAt(nullptr) != 0;
  reader_.objects.Open(std::move(index), !classic);
  Status status =
      classic
          ? ClassicRoute(objects_, facts_, reader_.table_entries_left).ReadSections(start.value())
          : ReadStreamSections(xref);
  if (status.ok()) status = ReadCatalog();
  if (status.ok()) status = ReadPagesRoot();
  if (status.ok()) ReadInfoStrings();
  return status;
}

// The number after "startxref", which must be in the document's last bytes.
Result<DWORD> Opening::FindStartXref() {
  FileChannel* const channel = reader_.file.channel();
  char tail[kTailBytes];
  DWORD count = 0;
  LONG const target = -static_cast<LONG>(kTailBytes);
  if (ChannelSeek(channel, target, nullptr, FILE_END) == INVALID_SET_FILE_POINTER ||
      !ChannelRead(channel, tail, kTailBytes, &count, nullptr) || count != kTailBytes) {
    return Status::Failed(PDF_ERROR_SYSTEM);
  }
  std::replace(tail, tail + kTailBytes, '\0', '_');
  auto const number = NumberAfterStartXref({tail, kTailBytes - 1});
  if (!number) return Status::Failed(PDF_ERROR_NOT_PDF);
  return static_cast<DWORD>(*number);
}

Status Opening::ReadStreamSections(CXRefStm& xref) {
  if (!ReadStreamChain(xref)) {
    return xref.IsTooLarge() ? Status::Failed(PDF_ERROR_MEMORY) : Status::Failed();
  }
  xref.FinishExtents();
  xref.ReleaseSection();
  TakeStreamIndex(xref);
  return Status::Ok();
}

bool Opening::ReadStreamChain(CXRefStm& xref) {
  DocumentId id;
  if (xref.LoadSection(false, false) == 0 || ReadIdKey(xref.SectionText(), id) == 0 ||
      xref.ReadTrailerKeys() == 0 || !ReadStreamSection(xref)) {
    return false;
  }
  // Sections do not overlap, so that all of them together are no larger than the document.
  uint64_t left = ChannelGetSize(reader_.file.channel(), nullptr) - xref.SectionText().size();
  std::set<uint64_t> seen{static_cast<DWORD>(xref.StartXref())};
  while (xref.Prev() != 0 && seen.insert(xref.Prev()).second) {
    if (xref.LoadSection(false, true) == 0 || xref.SectionText().size() > left) return false;
    left -= xref.SectionText().size();
    xref.Prev() = 0;
    if (!ReadStreamSection(xref)) return false;
  }
  return true;
}

void Opening::TakeStreamIndex(CXRefStm& xref) {
  static_assert(kIndexRows == ObjectTable::kRows);
  auto const& index = xref.ObjectIndex();
  DWORD const rows = static_cast<DWORD>(index.size());
  for (DWORD i = 0; i < rows; ++i) {
    table_.Change(i) = {static_cast<DWORD>(index[i].nOffset), index[i].nGeneration, index[i].nType};
  }
  table_.SetRowsInDocument(rows);
  ObjectId const none;
  ObjectId const& root = xref.Root() != nullptr ? *xref.Root() : none;
  ObjectId const& info = xref.Info() != nullptr ? *xref.Info() : none;
  facts_.max_section_offset = static_cast<DWORD>(xref.StartXref());
  facts_.trailer_size = rows;
  facts_.catalog = root.nNumber;
  facts_.catalog_generation = root.nGeneration;
  facts_.info = info.nNumber;
  facts_.info_generation = info.nGeneration;
}

Status Opening::ReadCatalog() {
  LoadedObject const catalog = objects_.Open(facts_.catalog);
  if (!catalog) return Status::Failed();
  DWORD generation = 0;
  if (!FindPair(catalog.text(), "Pages", &facts_.pages_root, &generation)) {
    return Status::Failed(PDF_ERROR_SYSTEM);
  }
  DWORD outlines = 0;
  bool const found = FindPair(catalog.text(), "Outlines", &outlines, &generation);
  facts_.outlines = found ? outlines : 0;
  return Status::Ok();
}

Status Opening::ReadPagesRoot() {
  LoadedObject const root = objects_.Open(facts_.pages_root);
  if (!root) return Status::Failed();
  if (!ReadPageCount(root.text())) return Status::Failed(PDF_ERROR_SYSTEM);
  reader_.page_counter = 0;
  bool const listed =
      ListPages(objects_, root.text(), facts_.pages_root, pages_, reader_.page_counter);
  return listed ? Status::Ok() : Status::Failed(PDF_ERROR_SYSTEM);
}

// Kept: a count by reference is refused where its number can be read, so that such documents fail;
// only one whose number cannot be read is followed.
bool Opening::ReadPageCount(std::span<BYTE> root) {
  if (!IsReferenceAfter(root, "Count")) return FindNumber(root, "Count", &pages_.count());
  DWORD number = 0;
  DWORD generation = 0;
  if (FindPair(root, "Count", &number, &generation)) return false;
  return objects_.ReadNumberOf(number, &pages_.count());
}

// A key that is absent leaves its string as it was.
void Opening::ReadInfoStrings() {
  LoadedObject const info = objects_.Open(facts_.info);
  if (!info) return;
  std::pair<char const*, WideString*> const strings[] = {{"/Title", &reader_.m_Title},
                                                         {"/Author", &reader_.m_Author},
                                                         {"/Subject", &reader_.m_Subject},
                                                         {"/Keywords", &reader_.m_Keywords}};
  for (auto const& [key, target] : strings) {
    if (InfoValue const value = ReadInfoValue(&reader_.objects, info.text(), key)) {
      *target = value.get();
    }
  }
}

}  // namespace sorrelin

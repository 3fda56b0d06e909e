// Updates of existing documents.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/opening.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/writer/cross_reference.h>
#include <sorrelin/writer/draft.h>
#include <sorrelin/writer/pages_root_text.h>
#include <sorrelin/writer/update.h>
#include <sorrelin/writer/update_facts.h>

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace sorrelin {

namespace {

constexpr DWORD kTypeInObjectStream = 2;

bool HasObjectsInStreams(ObjectTable const& table) {
  DWORD const rows = std::min(table.rows_in_document(), ObjectTable::kRows);
  for (DWORD object = 0; object < rows; ++object) {
    if (table[object].bInUse == kTypeInObjectStream) return true;
  }
  return false;
}

// Reads `text` at `offset` and leaves the channel at its end.
bool ReadBack(FileChannel* channel, DWORD offset, DWORD end, std::string& text) {
  DWORD const size = static_cast<DWORD>(text.size());
  DWORD count = 0;
  return ChannelSeek(channel, static_cast<LONG>(offset), nullptr, FILE_BEGIN) !=
             INVALID_SET_FILE_POINTER &&
         ChannelRead(channel, text.data(), size, &count, nullptr) != 0 && count == size &&
         ChannelSeek(channel, static_cast<LONG>(end), nullptr, FILE_BEGIN) !=
             INVALID_SET_FILE_POINTER;
}

// The object's bytes; its last byte does not count.
Result<std::string> ReadOldPagesRoot(Draft const& draft, ObjectLoader& objects) {
  DWORD const object = draft.update.old_pages_root;
  DWORD const size = draft.table.IsTaken(object) ? objects.SizeOf(object) : 0;
  if (size == 0) return Status::Failed();
  std::string text(size, '\0');
  if (!ReadBack(draft.output.channel, draft.table[object].nOffset, draft.output.offset, text)) {
    return Status::Failed(PDF_ERROR_SYSTEM);
  }
  text.back() = '\0';
  return text;
}

Result<DWORD> ReadOldPageCount(ObjectLoader& objects, std::string& text) {
  std::span<BYTE> const bytes(reinterpret_cast<BYTE*>(text.data()), text.size());
  DWORD count = 0;
  if (!objects.ReadNumber(bytes, "Count", &count)) return Status::Failed(PDF_ERROR_SYSTEM);
  return count;
}

std::vector<DWORD> ListedPages(Update const& update) {
  std::vector<DWORD> pages(std::min(update.page_count, PageList::kSlots));
  for (DWORD i = 0; i < pages.size(); ++i) pages[i] = update.pages[i];
  return pages;
}

}  // namespace

Status BeginUpdate(Draft const& draft) {
  Status const opened = Opening(draft.reader, draft.table, draft.pages, draft.facts).Run();
  if (!opened.ok()) return opened;
  if (draft.table.rows_in_document() == 0) return Status::Failed();
  if (HasObjectsInStreams(draft.table)) return Status::Failed(PDF_ERROR_VERSION);
  // Without room for its end, an update would leave a document that cannot be opened.
  if (draft.table.rows_in_document() - 1 >= ObjectTable::kRows - kFinishingRows) {
    return Status::Failed(PDF_ERROR_NEW_PAGE_OBJECT);
  }
  draft.update.old_catalog = draft.facts.catalog;
  draft.update.old_pages_root = draft.facts.pages_root;
  draft.update.page_count = 0;
  draft.update.pages.Clear();
  draft.output.current_object = draft.table.rows_in_document() - 1;
  return Status::Ok();
}

Status WriteUpdatedPagesRoot(Draft const& draft) {
  ObjectLoader objects = draft.Objects();
  Result<std::string> old_text = ReadOldPagesRoot(draft, objects);
  if (!old_text.ok()) return old_text.status();
  Result<DWORD> const old_count = ReadOldPageCount(objects, old_text.value());
  if (!old_count.ok()) return old_count.status();
  std::optional<std::string> const text = PagesRootWithPages(
      old_text.value(), old_count.value() + draft.update.page_count, ListedPages(draft.update));
  if (!text && HasPagesKeys(old_text.value())) return Status::Failed(PDF_ERROR_READ);
  ObjectWriter out = draft.Writer();
  // Kept: in memory the root has a new number without a row, so the header is missing there; file
  // updates renew the old row.
  out.Restart(draft.facts.pages_root, Body::kPlain, LineEnd::kNone, false);
  out.GoOn();
  if (!text) return Status::Failed(PDF_ERROR_READ);
  out.Line(text->c_str());
  return out.Outcome();
}

// Kept: /ID and /Encrypt go out as the reader cut them from the old trailer.
Status WriteUpdatedCrossReference(Draft const& draft, EntryRoom room) {
  DocumentFacts const& facts = draft.facts;
  ObjectWriter out = draft.Writer();
  CrossReference section(out, std::move(room));
  section.WriteUpdatedEntries(draft.update.old_catalog);
  section.BeginTrailer(facts);
  if (facts.info != 0) {
    out.Format("/Info %d %d R", static_cast<int>(facts.info),
               static_cast<int>(facts.info_generation));
  }
  if (*facts.trailer_id != 0) out.Line(facts.trailer_id);
  if (*facts.trailer_encrypt != 0) out.Line(facts.trailer_encrypt);
  section.EndTrailer();
  return out.Outcome();
}

}  // namespace sorrelin

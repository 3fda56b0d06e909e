// Sections of a classic cross-reference table: "xref", then subsections, each a line with first
// number and count, and an entry of 18 characters and a line end for each object.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/channel/read_window.h>
#include <sorrelin/document/classic_route.h>
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/text_integer.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

namespace sorrelin {

namespace {

using Bytes = std::span<BYTE const>;

constexpr DWORD kHeaderBytes = 50;
constexpr DWORD kEntryBytes = 18;
constexpr DWORD kEntryLook = 36;
constexpr DWORD kTrailerLook = 100;
constexpr DWORD kObjectHeaderBytes = 20;
constexpr std::string_view kTrailer = "trailer";

DWORD SkipSeparators(Bytes bytes, DWORD at) {
  while (at < bytes.size() && IsSeparator(bytes[at])) ++at;
  return at;
}

std::string_view TextOf(Bytes bytes) { return ByteView{bytes.data(), bytes.size()}.Text(); }

// The bytes that a subsection's first line takes if it is written as short as can be.
DWORD HeaderLength(bool at_keyword, DWORD first, DWORD count) {
  char const* const format = at_keyword ? "xref\r%d %d\r" : "%d %d\r";
  return static_cast<DWORD>(
      std::snprintf(nullptr, 0, format, static_cast<int>(first), static_cast<int>(count)));
}

struct TableEntry {
  DWORD offset;
  DWORD generation;
  char letter;
};

std::optional<TableEntry> ParseEntry(std::string_view text) {
  auto const offset = TakeInteger(text);
  auto const generation = offset ? TakeInteger(text) : std::nullopt;
  text = SkipScanSpace(text);
  if (!generation || text.empty()) return std::nullopt;
  return TableEntry{static_cast<DWORD>(*offset), static_cast<DWORD>(*generation), text[0]};
}

// Reads one section, subsection by subsection.
class SectionReader {
 public:
  SectionReader(DocumentFile& file, ObjectTable& table, DWORD& entries_left, DWORD offset,
                bool older)
      : file_(file), table_(table), entries_left_(entries_left), at_(offset), older_(older) {}

  Status Run() {
    Status status = Status::Ok();
    while (status.ok() && !at_trailer_) status = ReadSubsection();
    return status;
  }

 private:
  Status ReadSubsection() {
    DWORD count = 0;
    Status status = ReadHeader(count);
    for (DWORD i = 0; status.ok() && i < count; ++i) status = ReadEntry();
    return status.ok() ? LookForTrailer() : status;
  }

  // Kept: the line's length is computed and not measured; a line that holds more than its numbers
  // and separators is read from the wrong place.
  Status ReadHeader(DWORD& count) {
    BYTE header[kHeaderBytes];
    auto const read = window_.Read(file_.channel(), at_, header, kHeaderBytes);
    DWORD first = 0;
    if (read != kHeaderBytes || !FindPair(header, nullptr, &first, &count)) {
      return Status::Failed(PDF_ERROR_SYSTEM);
    }
    at_ += SkipSeparators(header, HeaderLength(at_keyword_, first, count));
    at_keyword_ = false;
    return Status::Ok();
  }

  // The line end of an entry counts as separators before the next one, whatever its length.
  Status ReadEntry() {
    // Sections that overlap would list more entries than the document has room for.
    if (entries_left_ == 0) return Status::Failed(PDF_ERROR_NOT_PDF);
    --entries_left_;
    auto const seen = window_.Look(file_.channel(), at_, kEntryLook);
    if (!seen || seen->size() < kEntryBytes) return Status::Failed(PDF_ERROR_SYSTEM);
    DWORD const begin = SkipSeparators(*seen, 0);
    auto const entry = ParseEntry(TextOf(seen->subspan(begin)).substr(0, kEntryBytes));
    if (!entry) return Status::Failed(PDF_ERROR_NOT_PDF);
    at_ += begin + kEntryBytes;
    return TakeEntry(*entry);
  }

  // Kept: the object's own header gives the number, and an entry that leads to none lands in row 0;
  // documents whose subsections are numbered wrong open.
  Status TakeEntry(TableEntry const& entry) {
    DWORD row = 0;
    Status const status = ReadObjectNumber(file_, entry.offset, row);
    if (status.code()) file_.Note(*status.code());
    if (row >= ObjectTable::kRows) return Status::Failed(PDF_ERROR_MEMORY);
    if (older_ && table_.IsTaken(row)) return Status::Ok();
    table_.Change(row) = {entry.offset, entry.generation, entry.letter == 'n' ? 1U : 0U};
    table_.SetRowsInDocument(std::max(table_.rows_in_document(), row + 1));
    return Status::Ok();
  }

  // Leaves the channel after the separators, on the trailer or the next subsection.
  Status LookForTrailer() {
    auto const seen = window_.Look(file_.channel(), at_, kTrailerLook);
    if (!seen || seen->size() < kTrailer.size()) return Status::Failed(PDF_ERROR_SYSTEM);
    DWORD const begin = SkipSeparators(*seen, 0);
    at_trailer_ = TextOf(seen->subspan(begin)).starts_with(kTrailer);
    at_ += begin;
    return file_.SeekTo(at_) ? Status::Ok() : Status::Failed(PDF_ERROR_SYSTEM);
  }

  DocumentFile& file_;
  ObjectTable& table_;
  DWORD& entries_left_;
  DWORD at_;  // offset of what is read next
  bool older_;
  bool at_keyword_ = true;   // the section's own keyword is there
  bool at_trailer_ = false;  // the word "trailer" is there
  ReadWindow window_;
};

}  // namespace

Status ClassicRoute::ReadTable(DWORD offset, bool older) {
  if (offset == 0) return Status::Failed();
  facts_.max_section_offset = std::max(facts_.max_section_offset, offset);
  DocumentFile& file = objects_.file();
  if (!older) entries_left_ = ChannelGetSize(file.channel(), nullptr) / kEntryBytes;
  return SectionReader(file, objects_.table(), entries_left_, offset, older).Run();
}

Status ReadObjectNumber(DocumentFile& file, DWORD offset, DWORD& number) {
  number = 0;
  if (offset == 0) return Status::Ok();
  auto const seen = file.Look(offset, kObjectHeaderBytes);
  if (!seen) return Status::Failed(PDF_ERROR_SYSTEM);
  if (seen->size() < kObjectHeaderBytes) return Status::Ok();
  std::string_view text = TextOf(*seen);
  auto const declared = TakeInteger(text);
  bool const header = declared && TakeInteger(text);
  text = SkipScanSpace(text);
  if (!header || !text.starts_with("obj")) return Status::Failed(PDF_ERROR_NOT_PDF);
  number = static_cast<DWORD>(*declared);
  return Status::Ok();
}

}  // namespace sorrelin

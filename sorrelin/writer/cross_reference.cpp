// The classic cross-reference section and trailer.
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/writer/cross_reference.h>
#include <sorrelin/writer/object_writer.h>

#include <algorithm>
#include <cstdio>

namespace sorrelin {

namespace {

constexpr size_t kMostEntryBytes = 32;  // numbers with a sign and eleven digits, and CR LF
constexpr size_t kRowsOfTheEnd = 4;     // row 0, and those that the end itself takes

}  // namespace

EntryRoom::EntryRoom(Output const& output) {
  size_t const rows = std::min(output.current_object, ObjectTable::kRows) + kRowsOfTheEnd;
  text_.reserve(rows * kMostEntryBytes);
}

CrossReference::CrossReference(ObjectWriter& out, EntryRoom room)
    : out_(out), entries_(room.Take()), table_(out.Reserve()) {}

void CrossReference::WriteNewEntries() {
  BeginEntries();
  AddEntry(0, 65535, false);
  for (DWORD object = 1; object < table_; ++object) {
    ObjectEntry const row = out_.table()[object];
    AddEntry(row.nOffset, row.nGeneration, row.bInUse != 0);
  }
  // In one write, where a document has as many entries as objects.
  out_.Bytes(entries_);
}

void CrossReference::WriteUpdatedEntries(DWORD old_catalog) {
  BeginEntries();
  for (DWORD object = 0; object < table_; ++object) {
    ObjectEntry const row = out_.table()[object];
    bool const replaced = object == old_catalog;
    AddEntry(row.nOffset, row.nGeneration + (replaced ? 1 : 0), row.bInUse != 0 && !replaced);
  }
  out_.Bytes(entries_);
}

void CrossReference::BeginEntries() {
  if (!out_.ok()) return;
  out_.table().Change(table_).nOffset = out_.output().offset;
  out_.Line("xref");
  out_.Format("0 %d", static_cast<int>(table_));
}

// Kept: numbers are written as signed 32-bit values, so an offset of 2 GiB or more is negative.
void CrossReference::AddEntry(DWORD offset, DWORD generation, bool in_use) {
  char entry[40];
  std::snprintf(entry, sizeof entry, "%.10d %.5d %c %s", static_cast<int>(offset),
                static_cast<int>(generation), in_use ? 'n' : 'f',
                out_.output().use_char13 != 0 ? "\r\n" : "\n");
  entries_ += entry;
}

void CrossReference::BeginTrailer(DocumentFacts const& facts) {
  out_.Lines({"trailer", "<<"});
  out_.Format("/Size %d", static_cast<int>(table_));
  out_.Format("/Root %d 0 R", static_cast<int>(facts.catalog));
}

void CrossReference::EndTrailer() {
  out_.Lines({">>", "startxref"});
  out_.Format("%d", static_cast<int>(out_.table()[table_].nOffset));
  out_.Line("%%EOF");
}

Status WriteCrossReference(ObjectWriter& out, DocumentFacts const& facts, EntryRoom room) {
  CrossReference section(out, std::move(room));
  section.WriteNewEntries();
  section.BeginTrailer(facts);
  // Kept: the Info object is object 1 of every new document.
  out.Format("/Info %d 0 R", 1);
  section.EndTrailer();
  return out.Outcome();
}

}  // namespace sorrelin

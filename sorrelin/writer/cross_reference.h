// The classic cross-reference section and trailer (ISO 32000-1, 7.5.4, 7.5.5): entries of 19
// characters and a line end, which is 20 bytes with LF.
#ifndef SORRELIN_WRITER_CROSS_REFERENCE_H_
#define SORRELIN_WRITER_CROSS_REFERENCE_H_

#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <string>
#include <utility>

namespace sorrelin {

class ObjectWriter;
struct DocumentFacts;
struct Output;

// Rows that the end of a document takes: the catalog's and the table's own.
inline constexpr DWORD kFinishingRows = 2;

// Memory for the entries of a document that is about to end. Taken before its last objects are
// written, so that nothing is written where it is short.
class EntryRoom {
 public:
  explicit EntryRoom(Output const& output);
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

// The section of a document under way: takes the number of the table's own row, which holds its
// offset and gets no entry, and writes what precedes the trailer and what follows it.
class CrossReference {
 public:
  CrossReference(ObjectWriter& out, EntryRoom room);

  // "xref", the section's first line, and an entry for each object; of a new document object 0 is
  // free with generation 65535.
  void WriteNewEntries();
  // Kept: the old catalog counts as free, one generation up.
  void WriteUpdatedEntries(DWORD old_catalog);
  // "trailer", "<<", /Size and /Root.
  void BeginTrailer(DocumentFacts const& facts);
  // ">>", and where the section begins.
  void EndTrailer();

 private:
  void BeginEntries();
  void AddEntry(DWORD offset, DWORD generation, bool in_use);

  ObjectWriter& out_;
  std::string entries_;
  DWORD table_;  // the row's number
};

// The section and the trailer of a new document.
Status WriteCrossReference(ObjectWriter& out, DocumentFacts const& facts, EntryRoom room);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_CROSS_REFERENCE_H_

// The classic route to the object table: "xref" sections, their trailers, and the chain of /Prev
// (ISO 32000-1, 7.5.4 and 7.5.5). All rows go straight into the table.
#ifndef SORRELIN_DOCUMENT_CLASSIC_ROUTE_H_
#define SORRELIN_DOCUMENT_CLASSIC_ROUTE_H_

#include <sorrelin/document/document_facts.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class DocumentFile;
class ObjectLoader;

class ClassicRoute {
 public:
  // `entries_left` is how many entries the sections of the document may still list; reading the
  // newest section sets it.
  ClassicRoute(ObjectLoader& objects, DocumentFacts& facts, DWORD& entries_left)
      : objects_(objects), facts_(facts), entries_left_(entries_left) {}

  // Reads the section at `start`, its trailer, and all older sections.
  Status ReadSections(DWORD start);

  // Reads the section at an offset and leaves the channel on its trailer. An older one only fills
  // rows that are free.
  Status ReadTable(DWORD offset, bool older);
  // Takes the newest trailer, at the channel's position, into the facts; its /Prev, if any, goes to
  // `prev`, which may be null.
  Status ReadTrailer(DWORD* prev);
  // Reads /Prev of an older trailer, at the channel's position; 0 for one that names itself, or
  // none.
  Status ReadPrev(DWORD* prev);

 private:
  bool TakeTrailerText(std::span<BYTE> trailer, char const* key,
                       char (&target)[DocumentFacts::kTrailerTextBytes]);

  ObjectLoader& objects_;
  DocumentFacts& facts_;
  DWORD& entries_left_;
};

// The number that the object at an offset declares. 0 with code 24 if no object begins there, with
// code 1 where the channel cannot be positioned.
Status ReadObjectNumber(DocumentFile& file, DWORD offset, DWORD& number);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_CLASSIC_ROUTE_H_

// The objects around the images, each a fixed template (ISO 32000-1, 7.5.2, 7.7, 14.3.3).
#ifndef SORRELIN_WRITER_SKELETON_H_
#define SORRELIN_WRITER_SKELETON_H_

#include <sorrelin/platform/process.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <string>

namespace sorrelin {

class ObjectWriter;
class PageList;
struct DocumentFacts;
struct ReaderState;

// The information strings and the time that an Info dictionary holds, as digits. Made before the
// first byte is written, and before a file is made, while a lack of memory does no harm.
struct InfoDigits {
  // The time is now unless the record has one.
  explicit InfoDigits(ReaderState const& record);
  std::string title;
  std::string author;
  std::string subject;
  std::string keywords;
  SYSTEMTIME created;
};

// The header lines and object 1, the Info dictionary. A null title takes the digits, or the
// default.
Status WriteHeader(ObjectWriter& out, char const* title, char const* creator,
                   InfoDigits const& info);

// Each of the following writes one object, whose number is the result, or 0.

// `count` is the value of /Count.
Result<DWORD> WriteOutlines(ObjectWriter& out, DocumentFacts& facts, DWORD count);
// Under its reserved number, with all pages. Error 11 if it is written already.
Result<DWORD> WritePagesRoot(ObjectWriter& out, DocumentFacts& facts, PageList const& pages);
Result<DWORD> WriteCatalog(ObjectWriter& out, DocumentFacts& facts, DWORD pages_root,
                           DWORD outlines);

// What a page object refers to.
struct PageObject {
  DWORD parent;
  int resource_type;  // 1: a font; 2: an XObject
  DWORD resource;     // its object number
  DWORD proc_set;     // object number
  char const* name;   // of the XObject
  POINT size;         // points
};

// Lists the page too. Its contents must be the next object. Error 12 past 30,000 pages, 13 for
// another type of resource.
Result<DWORD> WritePage(ObjectWriter& out, PageList& pages, PageObject const& page);

// 0: ImageB, 1: ImageC, 2: ImageI.
Result<DWORD> WriteProcSet(ObjectWriter& out, int image_type, bool text);
// Helvetica, under the name F1.
Result<DWORD> WriteFont(ObjectWriter& out);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_SKELETON_H_

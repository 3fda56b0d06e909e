// The one way in which an existing document becomes known: object table, catalog, page list and
// information strings.
#ifndef SORRELIN_DOCUMENT_OPENING_H_
#define SORRELIN_DOCUMENT_OPENING_H_

#include <sorrelin/document/object_loader.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class CXRefStm;
class ObjectTable;
class PageList;
struct DocumentFacts;
struct FileChannel;
struct ReaderState;

// Whether the channel begins with a header from "%PDF-1.0" to "%PDF-1.8": code 24 for fewer bytes,
// 25 for another header.
Status ReadHeader(FileChannel* channel);

class Opening {
 public:
  Opening(ReaderState& reader, ObjectTable& table, PageList& pages, DocumentFacts& facts);

  // Reads the document at the reader's channel. After a failure everything holds what was read
  // until then. Code 1, 10 or 24, or none.
  Status Run();

 private:
  Status Read();
  Result<DWORD> FindStartXref();
  Status ReadStreamSections(CXRefStm& xref);
  bool ReadStreamChain(CXRefStm& xref);
  void TakeStreamIndex(CXRefStm& xref);
  Status ReadCatalog();
  Status ReadPagesRoot();
  bool ReadPageCount(std::span<BYTE> root);
  void ReadInfoStrings();

  ReaderState& reader_;
  ObjectTable& table_;
  PageList& pages_;
  DocumentFacts& facts_;
  ObjectLoader objects_;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OPENING_H_

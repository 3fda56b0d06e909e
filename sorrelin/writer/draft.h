// The document under way, as the operations of the writer share it. All of it is the session's.
#ifndef SORRELIN_WRITER_DRAFT_H_
#define SORRELIN_WRITER_DRAFT_H_

#include <sorrelin/document/object_loader.h>
#include <sorrelin/writer/object_writer.h>

namespace sorrelin {

class PageList;
struct DocumentFacts;
struct ReaderState;
struct Update;

struct Draft {
  Output& output;
  ObjectTable& table;
  PageList& pages;
  DocumentFacts& facts;
  Update& update;
  ReaderState& reader;

  // The way to the objects of the document that is updated.
  ObjectLoader Objects() const;
  // For one operation, after which nothing is left of what reading remembered of the bytes.
  ObjectWriter Writer() const;
};

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_DRAFT_H_

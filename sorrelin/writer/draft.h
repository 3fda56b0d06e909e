// The document under way, as the operations of the writer share it. All of it is the session's.
#ifndef SORRELIN_WRITER_DRAFT_H_
#define SORRELIN_WRITER_DRAFT_H_

#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/document/zero_table.h>
#include <sorrelin/writer/object_writer.h>

namespace sorrelin {

// What an update of an existing document keeps.
struct Update {
  DWORD active = 0;      // not 0: the document is updated
  DWORD first_page = 0;  // not 0: no page was added yet
  DWORD old_catalog = 0;
  DWORD old_pages_root = 0;
  DWORD page_count = 0;                      // pages added
  ZeroTable<DWORD, PageList::kSlots> pages;  // their object numbers
};

struct Draft {
  Output& output;
  ObjectTable& table;
  PageList& pages;
  DocumentFacts& facts;
  Update& update;
  ReaderState& reader;

  // The way to the objects of the document that is updated.
  ObjectLoader Objects() const {
    reader.file.TakeNote();
    return {reader.file, reader.objects, table};
  }
  // For one operation, after which nothing is left of what reading remembered of the bytes.
  ObjectWriter Writer() const {
    reader.file.Forget();
    return {output, table};
  }
};

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_DRAFT_H_

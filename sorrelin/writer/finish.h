// The end of a document: its pages root, catalog, table and trailer.
#ifndef SORRELIN_WRITER_FINISH_H_
#define SORRELIN_WRITER_FINISH_H_

#include <sorrelin/platform/status.h>

namespace sorrelin {

struct Draft;

// Of a new document or of an update. The channel stays open.
Status WriteDocumentEnd(Draft const& draft);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_FINISH_H_

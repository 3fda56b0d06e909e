// Updates of existing documents: new pages follow the old bytes; a rewritten pages root, a new
// catalog and a whole new table come last. Nothing of the old bytes changes.
#ifndef SORRELIN_WRITER_UPDATE_H_
#define SORRELIN_WRITER_UPDATE_H_

#include <sorrelin/platform/status.h>
#include <sorrelin/writer/cross_reference.h>

namespace sorrelin {

struct Draft;

// Reads the document at the channel, and takes the numbers that the update continues from. Error 25
// for a document with objects in object streams, which a classic table cannot list; the codes of an
// opening.
Status BeginUpdate(Draft const& draft);

// Writes the old pages root again, with the added pages. Errors 1, 26.
Status WriteUpdatedPagesRoot(Draft const& draft);

// The table of all objects, old and new, and the trailer.
Status WriteUpdatedCrossReference(Draft const& draft, EntryRoom room);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_UPDATE_H_

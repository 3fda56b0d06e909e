// The end of a document.
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/writer/cross_reference.h>
#include <sorrelin/writer/draft.h>
#include <sorrelin/writer/finish.h>
#include <sorrelin/writer/skeleton.h>
#include <sorrelin/writer/update.h>
#include <sorrelin/writer/update_facts.h>

#include <utility>

namespace sorrelin {

namespace {

Status WriteRoot(Draft const& draft) {
  if (draft.update.active != 0) return WriteUpdatedPagesRoot(draft);
  ObjectWriter out = draft.Writer();
  return WritePagesRoot(out, draft.facts, draft.pages).status();
}

Status WriteCatalogOf(Draft const& draft) {
  ObjectWriter out = draft.Writer();
  return WriteCatalog(out, draft.facts, draft.facts.pages_root, draft.facts.outlines).status();
}

Status WriteTable(Draft const& draft, EntryRoom room) {
  if (draft.update.active != 0) return WriteUpdatedCrossReference(draft, std::move(room));
  ObjectWriter out = draft.Writer();
  return WriteCrossReference(out, draft.facts, std::move(room));
}

}  // namespace

Status WriteDocumentEnd(Draft const& draft) {
  EntryRoom room(draft.output);
  Status const root = WriteRoot(draft);
  if (!root.ok()) return root;
  Status const catalog = WriteCatalogOf(draft).After(root);
  return catalog.ok() ? WriteTable(draft, std::move(room)).After(catalog) : catalog;
}

}  // namespace sorrelin

// A snapshot of the document under way, so that an operation that ran out of memory can be taken
// back and tried again.
#ifndef SORRELIN_WRITER_CHECKPOINT_H_
#define SORRELIN_WRITER_CHECKPOINT_H_

#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/object_entry.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/writer/draft.h>

#include <new>
#include <stdexcept>

namespace sorrelin {

// A document in memory grows while it is written, so that each write may fail. Files do not need
// memory: what is written to them needs it before its first byte.
class Checkpoint {
 public:
  explicit Checkpoint(Draft const& draft);

  // Whether a write has failed since for lack of memory.
  bool IsShortOfMemory() const { return draft_.output.short_of_memory; }
  // Takes back the objects, the pages and the bytes since then.
  void Restore();

 private:
  bool IsMemory() const;

  Draft draft_;
  Output output_;
  DocumentFacts facts_;
  ObjectEntry pages_root_;
  DWORD page_count_;
  DWORD updated_pages_;
  uint64_t size_ = 0;      // of a document in memory
  uint64_t position_ = 0;  // in it
};

// Runs work that writes; where memory is short the document is what it was.
template <typename Work>
Status WithCheckpoint(Draft const& draft, Work work) {
  Checkpoint before(draft);
  try {
    Status const status = work();
    if (before.IsShortOfMemory()) before.Restore();
    return before.IsShortOfMemory() ? Status::Failed(PDF_ERROR_SYSTEM) : status;
  } catch (std::bad_alloc const&) {
    before.Restore();
    throw;
  } catch (std::length_error const&) {
    before.Restore();
    throw;
  }
}

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_CHECKPOINT_H_

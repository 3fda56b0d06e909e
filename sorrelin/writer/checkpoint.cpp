// Snapshots of a document under way.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/writer/checkpoint.h>
#include <sorrelin/writer/update_facts.h>

namespace sorrelin {

Checkpoint::Checkpoint(Draft const& draft)
    : draft_(draft),
      output_(draft.output),
      facts_(draft.facts),
      pages_root_(draft.table[draft.facts.pages_root]),
      page_count_(draft.pages.count()),
      updated_pages_(draft.update.page_count) {
  draft.output.short_of_memory = false;
  if (!IsMemory()) return;
  size_ = output_.channel->buffer.nSize;
  position_ = output_.channel->buffer.nPos;
}

void Checkpoint::Restore() {
  bool const short_of_memory = draft_.output.short_of_memory;
  DWORD const last = draft_.output.current_object;
  for (DWORD object = output_.current_object + 1; object <= last; ++object) {
    if (object < ObjectTable::kRows) draft_.table.Change(object) = {};
  }
  if (facts_.pages_root < ObjectTable::kRows) draft_.table.Change(facts_.pages_root) = pages_root_;
  draft_.output = output_;
  draft_.output.short_of_memory = short_of_memory;
  draft_.facts = facts_;
  draft_.pages.count() = page_count_;
  draft_.update.page_count = updated_pages_;
  draft_.reader.file.Forget();
  if (!IsMemory()) return;
  output_.channel->buffer.nSize = size_;
  output_.channel->buffer.nPos = position_;
}

bool Checkpoint::IsMemory() const {
  return IsUsableChannel(output_.channel) && output_.channel->bMemory != 0;
}

}  // namespace sorrelin

// What an update of an existing document keeps.
#ifndef SORRELIN_WRITER_UPDATE_FACTS_H_
#define SORRELIN_WRITER_UPDATE_FACTS_H_

#include <sorrelin/document/page_list.h>
#include <sorrelin/document/zero_table.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

struct Update {
  DWORD active = 0;      // not 0: the document is updated
  DWORD first_page = 0;  // not 0: no page was added yet
  DWORD old_catalog = 0;
  DWORD old_pages_root = 0;
  DWORD page_count = 0;                      // pages added
  ZeroTable<DWORD, PageList::kSlots> pages;  // their object numbers
};

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_UPDATE_FACTS_H_

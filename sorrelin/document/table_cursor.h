// The place of a reader in a classic cross-reference section.
#ifndef SORRELIN_DOCUMENT_TABLE_CURSOR_H_
#define SORRELIN_DOCUMENT_TABLE_CURSOR_H_

#include <sorrelin/channel/read_window.h>
#include <sorrelin/platform/types.h>

namespace sorrelin {

struct TableCursor {
  DWORD nAt = 0;            // offset of what is read next
  bool bAtKeyword = true;   // the section's own keyword stands there
  bool bAtTrailer = false;  // the word "trailer" stands there
  bool bOlder = false;      // the section only fills rows that newer ones left free
  ReadWindow Window;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_TABLE_CURSOR_H_

// One row of the object table.
#ifndef SORRELIN_DOCUMENT_OBJECT_ENTRY_H_
#define SORRELIN_DOCUMENT_OBJECT_ENTRY_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

// In a document that was read, bInUse holds the entry type.
struct ObjectEntry {
  DWORD nOffset;      // bytes from the start of the target; 0: the row is free
  DWORD nGeneration;  // as in "N G obj"
  DWORD bInUse;       // not 0: the object was written
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OBJECT_ENTRY_H_

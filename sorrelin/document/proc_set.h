// The image kinds that a /ProcSet names.
#ifndef SORRELIN_DOCUMENT_PROC_SET_H_
#define SORRELIN_DOCUMENT_PROC_SET_H_

#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class ObjectLoader;

// Reads the key's array, in the text or in the object that it names, into `flags`: 1 for ImageB, 2
// for ImageI, 4 for ImageC. `flags` stay as they were without a value. Code 33 for a reference
// without a number, 2 for a single name, 1 where the channel cannot be positioned.
Status ReadProcSet(ObjectLoader& objects, std::span<BYTE> text, DWORD& flags);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_PROC_SET_H_

// The text of an object as a fetch hands it out.
#ifndef SORRELIN_DOCUMENT_OBJECT_BYTES_H_
#define SORRELIN_DOCUMENT_OBJECT_BYTES_H_

#include <sorrelin/platform/block.h>

namespace sorrelin {

// A result that is not valid may still have a block.
struct ObjectBytes {
  OwnedBlock block;  // unlocked; the text's terminator counts
  bool valid = false;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OBJECT_BYTES_H_

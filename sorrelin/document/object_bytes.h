// The text of an object as a fetch returns it.
#ifndef SORRELIN_DOCUMENT_OBJECT_BYTES_H_
#define SORRELIN_DOCUMENT_OBJECT_BYTES_H_

#include <sorrelin/platform/block.h>

#include <cstddef>
#include <cstdint>

namespace sorrelin {

// A result that is not valid may still have a block.
struct ObjectBytes {
  OwnedBlock block;  // unlocked; the text's terminator counts
  bool valid = false;
  size_t held = SIZE_MAX;  // bytes that the file holds; those after them are NULs or blanks
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_OBJECT_BYTES_H_

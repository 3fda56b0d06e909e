// /ID of a cross-reference stream.
#ifndef SORRELIN_DOCUMENT_ID_KEY_H_
#define SORRELIN_DOCUMENT_ID_KEY_H_

#include <sorrelin/platform/types.h>

#include <span>
#include <string>

namespace sorrelin {

struct DocumentId {
  std::string permanent;
  std::string changing;
};

// Reads the two strings behind /ID, decoded. 1 also where the text has no "ID" at all; 0 if it has
// one that is not the key, or does not lead to two closed strings.
int ReadIdKey(std::span<BYTE const> text, DocumentId& id);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_ID_KEY_H_

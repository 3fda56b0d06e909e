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

// Reads the two strings after /ID, decoded; both stay empty where there are no two closed strings.
// 0 only if the text has an "ID" that is not the key.
int ReadIdKey(std::span<BYTE const> text, DocumentId& id);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_ID_KEY_H_

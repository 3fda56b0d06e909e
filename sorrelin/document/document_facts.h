// What the trailer and the catalog of a document say.
#ifndef SORRELIN_DOCUMENT_DOCUMENT_FACTS_H_
#define SORRELIN_DOCUMENT_DOCUMENT_FACTS_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

struct DocumentFacts {
  static constexpr DWORD kTrailerTextBytes = 128;

  DWORD catalog = 0;
  DWORD catalog_generation = 0;
  DWORD info = 0;
  DWORD info_generation = 0;
  DWORD outlines = 0;
  DWORD pages_root = 0;
  DWORD trailer_size = 0;                        // /Size
  DWORD max_section_offset = 0;                  // of the cross-reference sections
  char trailer_id[kTrailerTextBytes] = {};       // the key /ID with its value
  char trailer_encrypt[kTrailerTextBytes] = {};  // the key /Encrypt with its value
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_DOCUMENT_FACTS_H_

// Text string values of a dictionary, as UTF-16.
#ifndef SORRELIN_DOCUMENT_INFO_VALUE_H_
#define SORRELIN_DOCUMENT_INFO_VALUE_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/object_source.h>

#include <cstdlib>
#include <memory>
#include <span>

namespace sorrelin {

struct FreeArray {
  void operator()(WCHAR* units) const { std::free(units); }
};
// A zero-terminated text from the heap allocator.
using InfoValue = std::unique_ptr<WCHAR[], FreeArray>;

// The text string value of `key` ("/Title"); null without one.
InfoValue ReadInfoValue(ObjectSource* objects, std::span<BYTE> text, char const* key);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_INFO_VALUE_H_

// Where the reading of a value finds what is in another object.
#ifndef SORRELIN_SYNTAX_OBJECT_SOURCE_H_
#define SORRELIN_SYNTAX_OBJECT_SOURCE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <string>

namespace sorrelin {

class ObjectSource {
 public:
  virtual ~ObjectSource() = default;

  // The text of the object that a reference names, from its header to its first NUL; nothing if it
  // cannot be had.
  virtual std::optional<std::string> TextOf(DWORD number) = 0;
};

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_OBJECT_SOURCE_H_

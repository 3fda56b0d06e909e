// The source of values that are in other objects.
#ifndef SORRELIN_SYNTAX_OBJECT_SOURCE_H_
#define SORRELIN_SYNTAX_OBJECT_SOURCE_H_

#include <sorrelin/platform/types.h>

#include <optional>
#include <string>

namespace sorrelin {

class ObjectSource {
 public:
  virtual ~ObjectSource() = default;

  // The text of the object that a reference names, from its header to its first NUL; nullopt if it
  // cannot be had.
  virtual std::optional<std::string> TextOf(DWORD number) = 0;
};

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_OBJECT_SOURCE_H_

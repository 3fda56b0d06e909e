// The text of one value, cut out of an object's bytes, with references followed.
#ifndef SORRELIN_SYNTAX_VALUE_TEXT_H_
#define SORRELIN_SYNTAX_VALUE_TEXT_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/object_source.h>

#include <optional>
#include <string>

namespace sorrelin {

struct ValueText {
  // Kept: 0 also for a reference to an object whose value could be read; string values of such
  // references are refused through this, while the other types read on in `text`.
  int result = 0;
  // nullopt if a reference could not be followed. A NUL follows the text.
  std::optional<std::string> text;
  // Bytes as reported; nothing for a dictionary, whose size is not reported. It may be less than
  // the text's, where a text begins with a number that is no reference, and counts the NUL of an
  // object's text.
  std::optional<DWORD> size;
};

// `rest` is what follows a key. Its last byte never belongs to a value.
ValueText IsolateValue(ObjectSource* objects, ByteView rest);

}  // namespace sorrelin

#endif  // SORRELIN_SYNTAX_VALUE_TEXT_H_

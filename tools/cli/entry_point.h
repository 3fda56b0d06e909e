// Entry points of libraries that are loaded when they are needed.
#ifndef TOOLS_CLI_ENTRY_POINT_H_
#define TOOLS_CLI_ENTRY_POINT_H_

#include <sorrelin/image/codecs/sibling_library.h>

namespace sorrelin::tool {

// False, with `function` null, if the library has no entry point of this name.
template <typename Function>
bool FindEntry(HMODULE library, char const* name, Function& function) {
  function = EntryPoint<Function>(library, name);
  return function != nullptr;
}

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_ENTRY_POINT_H_

// Loads libsane, which nothing but scanning needs.
#include "tools/scan/sane_library.h"

#include <sorrelin/platform/module.h>

namespace sorrelin::tool {
namespace {

template <typename Function>
bool Find(HMODULE library, char const* name, Function& function) {
  function = reinterpret_cast<Function>(GetProcAddress(library, name));
  return function != nullptr;
}

bool FindAll(HMODULE library, SaneLibrary& sane) {
  return Find(library, "sane_init", sane.init) &&
         Find(library, "sane_get_devices", sane.get_devices) &&
         Find(library, "sane_open", sane.open) && Find(library, "sane_close", sane.close) &&
         Find(library, "sane_get_option_descriptor", sane.get_option_descriptor) &&
         Find(library, "sane_control_option", sane.control_option) &&
         Find(library, "sane_get_parameters", sane.get_parameters) &&
         Find(library, "sane_start", sane.start) && Find(library, "sane_read", sane.read) &&
         Find(library, "sane_cancel", sane.cancel) &&
         Find(library, "sane_strstatus", sane.strstatus);
}

}  // namespace

SaneLibrary const* LoadSane(std::string& problem) {
  static SaneLibrary sane;
  static bool begun = false;
  if (begun) return &sane;
  HMODULE const library = LoadLibraryW(u"libsane.so.1");
  if (library == nullptr || !FindAll(library, sane)) {
    return problem = "cannot be used: libsane is missing (install the package libsane1)", nullptr;
  }
  SANE_Status const status = sane.init(nullptr, nullptr);
  if (status != SANE_STATUS_GOOD) {
    return problem = std::string("cannot be used: ") + sane.strstatus(status) +
                     " (see that scanimage -L finds it)",
           nullptr;
  }
  begun = true;
  return &sane;
}

}  // namespace sorrelin::tool

// Loads libsane, which nothing but scanning needs.
#include "tools/scan/sane_library.h"

#include <sorrelin/platform/module.h>

#include "tools/cli/entry_point.h"

namespace sorrelin::tool {
namespace {

bool FindAll(HMODULE library, SaneLibrary& sane) {
  return FindEntry(library, "sane_init", sane.init) &&
         FindEntry(library, "sane_get_devices", sane.get_devices) &&
         FindEntry(library, "sane_open", sane.open) &&
         FindEntry(library, "sane_close", sane.close) &&
         FindEntry(library, "sane_get_option_descriptor", sane.get_option_descriptor) &&
         FindEntry(library, "sane_control_option", sane.control_option) &&
         FindEntry(library, "sane_get_parameters", sane.get_parameters) &&
         FindEntry(library, "sane_start", sane.start) &&
         FindEntry(library, "sane_read", sane.read) &&
         FindEntry(library, "sane_cancel", sane.cancel) &&
         FindEntry(library, "sane_strstatus", sane.strstatus);
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

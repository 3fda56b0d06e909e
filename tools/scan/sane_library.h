// The functions of libsane, which is loaded when a scanner is asked for.
#ifndef TOOLS_SCAN_SANE_LIBRARY_H_
#define TOOLS_SCAN_SANE_LIBRARY_H_

#include <sane/sane.h>

#include <string>

namespace sorrelin::tool {

struct SaneLibrary {
  decltype(&sane_init) init = nullptr;
  decltype(&sane_get_devices) get_devices = nullptr;
  decltype(&sane_open) open = nullptr;
  decltype(&sane_close) close = nullptr;
  decltype(&sane_get_option_descriptor) get_option_descriptor = nullptr;
  decltype(&sane_control_option) control_option = nullptr;
  decltype(&sane_get_parameters) get_parameters = nullptr;
  decltype(&sane_start) start = nullptr;
  decltype(&sane_read) read = nullptr;
  decltype(&sane_cancel) cancel = nullptr;
  decltype(&sane_strstatus) strstatus = nullptr;
};

// Loads and begins the library, once. nullptr with the reason in `problem`.
SaneLibrary const* LoadSane(std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_SANE_LIBRARY_H_

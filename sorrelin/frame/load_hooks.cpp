// Calls the entry point when the shared library is loaded and unloaded, as Windows does.
#include <sorrelin/frame/dll_main.h>

namespace {

__attribute__((constructor)) void Attach() { DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr); }
__attribute__((destructor)) void Detach() { DllMain(nullptr, DLL_PROCESS_DETACH, nullptr); }

}  // namespace

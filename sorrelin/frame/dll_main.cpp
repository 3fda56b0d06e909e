// The module's entry point: keeps the instance handle and writes the load line.
#include <sorrelin/frame/dll_main.h>

#include <cstdio>

namespace {

HMODULE g_module_instance = nullptr;

// Kept: every call of the entry point writes the line, without a line end; programs look for it.
void WriteLoadLine() {
#if defined(SORRELIN_LOAD_LINE)
  std::printf("Sorrelin DLLMain end");
#endif
}

}  // namespace

namespace sorrelin {

HMODULE ModuleInstance() { return g_module_instance; }

}  // namespace sorrelin

extern "C" BOOL WINAPI DllMain(HMODULE module, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) g_module_instance = module;
  WriteLoadLine();
  return 1;
}

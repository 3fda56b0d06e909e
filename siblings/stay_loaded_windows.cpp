// A codec's entry point on Windows, where a codec stays loaded once it has been loaded.
#include <windows.h>

// The compiler's run-time library takes one of the process's 1,088 places for thread-local values
// at each load and does not give it back, and programs load a codec for each page.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) {
    HMODULE pinned = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<WCHAR const*>(instance), &pinned);
  }
  return TRUE;
}

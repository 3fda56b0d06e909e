// The module's entry point.
#ifndef SORRELIN_FRAME_DLL_MAIN_H_
#define SORRELIN_FRAME_DLL_MAIN_H_

#include <sorrelin/platform/module.h>
#include <sorrelin/platform/types.h>

#if !defined(_WIN32)

#define DLL_PROCESS_DETACH 0u
#define DLL_PROCESS_ATTACH 1u
#define WINAPI

#endif

extern "C" BOOL WINAPI DllMain(HMODULE module, DWORD reason, void* reserved);

namespace sorrelin {

// The module's instance handle, stored at process attach: the library's one global.
HMODULE ModuleInstance();

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_DLL_MAIN_H_

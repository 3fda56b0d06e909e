/* Shared libraries loaded at run time. Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_MODULE_H_
#define SORRELIN_PLATFORM_MODULE_H_

#include <sorrelin/platform/types.h>

#if defined(_WIN32)

#define SORRELIN_PATH_SEPARATOR SORRELIN_TEXT('\\')

#else

/* The separator between a folder and a name. */
#define SORRELIN_PATH_SEPARATOR SORRELIN_TEXT('/')

/* Address of an entry point; cast it to the function's type. */
typedef void (*FARPROC)(void);

/* Handle of a library that is loaded already, by the names that LoadLibraryW would try; a null name
 * means the host program.
 * Null with error 126 otherwise. The handle needs no FreeLibrary. */
SORRELIN_PLATFORM_API HMODULE GetModuleHandleW(WCHAR const* name);

/* Path of a module's file, a null module being the host program: the length in units, cut to
 * `capacity` - 1 with the terminator (error 122 then); 0 on failure. */
SORRELIN_PLATFORM_API DWORD GetModuleFileNameW(HMODULE module, WCHAR* buffer, DWORD capacity);

/* Loads a library: the name as given, then, for a last component that ends in ".dll" in any letter
 * case, "lib" + the stem in lower case + ".so" in the same place. A name without a separator is
 * searched by the loader, beside the platform library first, and last in the folder "sorrelin"
 * there. Null with error 126 if nothing loads and for an empty name. Release it with FreeLibrary.
 */
SORRELIN_PLATFORM_API HMODULE LoadLibraryW(WCHAR const* name);

/* Entry point by name, or null with error 127, also for a value that is no module's handle. */
SORRELIN_PLATFORM_API FARPROC GetProcAddress(HMODULE module, char const* name);

/* Releases one LoadLibraryW; 0 with error 6 if none is left. */
SORRELIN_PLATFORM_API BOOL FreeLibrary(HMODULE module);

#endif /* _WIN32 */
#endif /* SORRELIN_PLATFORM_MODULE_H_ */

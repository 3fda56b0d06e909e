/* System error numbers, in Windows numbering, one per thread. Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_ERROR_H_
#define SORRELIN_PLATFORM_ERROR_H_

#include <sorrelin/platform/types.h>

#if !defined(_WIN32)

/* The numbers that the platform layer sets or reports. */
#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_PATH_NOT_FOUND 3u
#define ERROR_TOO_MANY_OPEN_FILES 4u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_WRITE_PROTECT 19u
#define ERROR_GEN_FAILURE 31u
#define ERROR_SHARING_VIOLATION 32u
#define ERROR_HANDLE_EOF 38u
#define ERROR_NOT_SUPPORTED 50u
#define ERROR_FILE_EXISTS 80u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_BROKEN_PIPE 109u
#define ERROR_DISK_FULL 112u
#define ERROR_INSUFFICIENT_BUFFER 122u
#define ERROR_INVALID_NAME 123u
#define ERROR_MOD_NOT_FOUND 126u
#define ERROR_PROC_NOT_FOUND 127u
#define ERROR_NEGATIVE_SEEK 131u
#define ERROR_SEEK_ON_DEVICE 132u
#define ERROR_DIR_NOT_EMPTY 145u
#define ERROR_DISCARDED 157u
#define ERROR_NOT_LOCKED 158u
#define ERROR_ALREADY_EXISTS 183u
#define ERROR_FILENAME_EXCED_RANGE 206u
#define ERROR_FILE_TOO_LARGE 223u
#define ERROR_PROCESS_ABORTED 1067u
#define ERROR_IO_DEVICE 1117u
#define ERROR_NOT_FOUND 1168u
#define ERROR_CANCELLED 1223u
#define ERROR_FILE_READ_ONLY 6009u

/* Flags of FormatMessageA. */
#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x0100u
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x0200u
#define FORMAT_MESSAGE_FROM_SYSTEM 0x1000u

/* Sets and gives this thread's number. A failed operation of this layer has set it. */
SORRELIN_PLATFORM_API void SetLastError(DWORD error);
SORRELIN_PLATFORM_API DWORD GetLastError(void);

/* The system's text for error number `id`, without a line end; an unknown number has one too.
 * Serves the flags 0x1300 only: a new buffer goes into the pointer that `buffer` addresses (cast to
 * char*), and the caller frees it with LocalFree. The length without the terminator; 0 on failure.
 */
SORRELIN_PLATFORM_API DWORD FormatMessageA(DWORD flags, void const* source, DWORD id,
                                           DWORD language, char* buffer, DWORD size,
                                           void* arguments);

/* Frees what FormatMessageA allocated, and returns null. */
SORRELIN_PLATFORM_API void* LocalFree(void* memory);

#endif /* !_WIN32 */
#endif /* SORRELIN_PLATFORM_ERROR_H_ */

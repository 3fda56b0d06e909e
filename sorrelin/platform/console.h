/* What a command-line program asks of its terminal and of the user who interrupts it. Valid C11 and
 * C++. */
#ifndef SORRELIN_PLATFORM_CONSOLE_H_
#define SORRELIN_PLATFORM_CONSOLE_H_

#include <sorrelin/platform/process.h>
#include <sorrelin/platform/types.h>

#if !defined(_WIN32)

/* What a handler is called with. */
#define CTRL_C_EVENT 0u
#define CTRL_CLOSE_EVENT 2u
#define CTRL_SHUTDOWN_EVENT 6u

/* The calling convention of handlers, which has a name where there are several. */
#define WINAPI

/* Called with the event; not 0 lets the process live on. */
typedef BOOL(WINAPI* PHANDLER_ROUTINE)(DWORD event);

/* Has `handler` called when the user or the system asks the process to end: CTRL_C_EVENT for
 * SIGINT, CTRL_CLOSE_EVENT for SIGHUP, CTRL_SHUTDOWN_EVENT for SIGTERM. It runs on a thread of its
 * own, so it may do what any thread may; afterwards the process ends as if by the signal. A signal
 * that the process was started to ignore stays ignored. Call it once, with `add` not 0, before any
 * other thread starts. A copy of the process has no handler until it calls this itself. 0 with
 * error 87, 183 (there is a handler) or 8. */
SORRELIN_PLATFORM_API BOOL SetConsoleCtrlHandler(PHANDLER_ROUTINE handler, BOOL add);

#endif /* !_WIN32 */

/* Not 0 if standard error is a terminal. */
SORRELIN_PLATFORM_API BOOL StandardErrorIsTerminal(void);

/* Not 0 if standard output is a terminal. */
SORRELIN_PLATFORM_API BOOL StandardOutputIsTerminal(void);

/* Columns of the terminal on standard error; 0 if that is not known. */
SORRELIN_PLATFORM_API int StandardErrorColumns(void);

/* Drops what is written to standard error until RestoreStandardError, which takes the result: for
 * libraries that cannot be kept from printing there. -1, with nothing changed, on failure. */
SORRELIN_PLATFORM_API int MuteStandardError(void);
SORRELIN_PLATFORM_API void RestoreStandardError(int muted);

/* From now on a write past the limit on the size of files fails with error 223, where some systems
 * would end the process. */
SORRELIN_PLATFORM_API void FailPastFileSizeLimit(void);

/* From now on a write into a pipe that nobody reads any more fails with error 109, where some
 * systems would end the process. */
SORRELIN_PLATFORM_API void FailOnClosedPipe(void);

#endif /* SORRELIN_PLATFORM_CONSOLE_H_ */

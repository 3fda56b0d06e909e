/* Work in a process of its own, which may be ended or crash there without harm to the caller.
 * Declares nothing on Windows, which cannot copy processes. Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_CHILD_H_
#define SORRELIN_PLATFORM_CHILD_H_

#include <sorrelin/platform/types.h>

#if !defined(_WIN32)

/* The way from the work to the process that waits for it. */
typedef struct tagCHILD_LINK CHILD_LINK;

/* The work. What it changes in memory, the caller does not see; what it holds is not destroyed when
 * it returns, and no exit handler runs. */
typedef void (*PCHILD_ROUTINE)(CHILD_LINK* link, void* context);

/* Takes bytes that the work has sent, in their order but in pieces of any size; 0 ends the work. */
typedef BOOL (*PCHILD_RECEIVER)(void const* data, DWORD size, void* context);

/* Called by the work: passes bytes to the receiver. 0 if nobody takes them any more. */
SORRELIN_PLATFORM_API BOOL SendToParent(CHILD_LINK* link, void const* data, DWORD size);

/* Runs `routine` in a copy of this process with this thread alone, and passes what it sends to
 * `receiver`, here. Requests to end take their usual effect on the copy, unless it calls
 * SetConsoleCtrlHandler; the end of this process is such a request. Not 0 if the routine has
 * returned and everything was received. Otherwise 0 with error 1067 (the child was ended before), 8
 * (it ended because memory was short), 1223 (the receiver gave 0), or what the system says. */
SORRELIN_PLATFORM_API BOOL RunInChildProcess(PCHILD_ROUTINE routine, PCHILD_RECEIVER receiver,
                                             void* context);

#endif /* !_WIN32 */

#endif /* SORRELIN_PLATFORM_CHILD_H_ */

// Work that would have a process of its own on other systems, in this one.
#include <sorrelin/platform/child.h>
#include <windows.h>

#include <new>

struct tagCHILD_LINK {
  PCHILD_RECEIVER receiver;
  void* context;
  bool refused;
};

BOOL SendToParent(CHILD_LINK* link, void const* data, DWORD size) {
  if (!link->refused && link->receiver(data, size, link->context) == FALSE) link->refused = true;
  return link->refused ? FALSE : TRUE;
}

BOOL RunInChildProcess(PCHILD_ROUTINE routine, PCHILD_RECEIVER receiver, void* context) {
  if (routine == nullptr || receiver == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  CHILD_LINK link = {receiver, context, false};
  try {
    routine(&link, context);
  } catch (std::bad_alloc const&) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
  }
  if (link.refused) SetLastError(ERROR_CANCELLED);
  return link.refused ? FALSE : TRUE;
}

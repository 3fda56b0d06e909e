// The prompt for a document's password. Windows only, and dormant: no operation asks for it.
#ifndef SORRELIN_FRAME_PASSWORD_PROMPT_WINDOWS_H_
#define SORRELIN_FRAME_PASSWORD_PROMPT_WINDOWS_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

// Shows the modal prompt and stores what was typed, zero-terminated, in `buffer` of `capacity`
// units. A null instance is this module. 1 for OK, 2 for Cancel, with an empty text; 0 without a
// dialog for a null buffer or no capacity; the system's result if the dialog cannot be shown.
INT_PTR PromptForPassword(HINSTANCE instance, HWND parent, WCHAR* buffer, int capacity);

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_PASSWORD_PROMPT_WINDOWS_H_

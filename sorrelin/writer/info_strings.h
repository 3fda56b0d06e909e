// The text of an information string, set by a caller and copied back.
#ifndef SORRELIN_WRITER_INFO_STRINGS_H_
#define SORRELIN_WRITER_INFO_STRINGS_H_

#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>
#include <sorrelin/platform/wide_string.h>

namespace sorrelin {

// `size` is the room on the way in, in units with the terminator, and what the text needs on the
// way out; a null buffer asks for that alone. Error 7 for a null size, 35 for too little room.
Status CopyInfoString(WideString const& text, WCHAR* buffer, DWORD* size);
// The same in the system's code page.
Status CopyInfoString(WideString const& text, char* buffer, DWORD* size);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_INFO_STRINGS_H_

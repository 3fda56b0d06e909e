// What the flat functions share: the session behind a handle, and the result convention.
#ifndef SORRELIN_FRAME_FLAT_H_
#define SORRELIN_FRAME_FLAT_H_

#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>

namespace sorrelin {

// Null for the invalid handles 0 and -1.
inline CCreatePDF* SessionOf(hPDF handle) {
  return handle == 0 || handle == -1 ? nullptr : reinterpret_cast<CCreatePDF*>(handle);
}

// 0 for a class method's success, else the session's last error.
inline DWORD ResultOf(CCreatePDF& session, int succeeded) {
  return succeeded != 0 ? DWORD{PDF_ERROR_NONE} : session.PDF_GetLastError();
}

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_FLAT_H_

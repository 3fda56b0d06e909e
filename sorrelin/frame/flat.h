// What the flat functions share: the session behind a handle, the result convention, and the guard
// that keeps exceptions for short memory inside the C interface.
#ifndef SORRELIN_FRAME_FLAT_H_
#define SORRELIN_FRAME_FLAT_H_

#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/wide_string.h>

#include <new>

namespace sorrelin {

// Null for the invalid handles 0 and -1.
inline CCreatePDF* SessionOf(hPDF handle) {
  return handle == 0 || handle == -1 ? nullptr : reinterpret_cast<CCreatePDF*>(handle);
}

// 0 for a class method's success, else the session's last error.
inline DWORD ResultOf(CCreatePDF& session, int succeeded) {
  return succeeded != 0 ? DWORD{PDF_ERROR_NONE} : session.PDF_GetLastError();
}

// The result of `work`; where memory is short the failure, with code 10 for the session, if any.
// The one other exception, for a document's bad text, passes.
template <typename Result, typename Work>
Result Guarded(hPDF handle, Result failure, Work work) {
  try {
    return work();
  } catch (std::bad_alloc const&) {
  } catch (SorrelinStringError const& error) {
    if (error.code() != SorrelinStringError::kFailed) throw;
  }
  CCreatePDF* const session = SessionOf(handle);
  if (session != nullptr) session->PDF_SetLastError(PDF_ERROR_MEMORY);
  return failure;
}

// Work of the class on a live session, which succeeds or leaves its code.
template <typename Work>
DWORD OnSession(hPDF handle, Work work) {
  CCreatePDF* const session = SessionOf(handle);
  if (session == nullptr) return PDF_ERROR_INVALID_HANDLE;
  return Guarded(handle, DWORD{PDF_ERROR_MEMORY},
                 [&] { return ResultOf(*session, work(*session)); });
}

// The wide form of a flat function on its name in the system's code page.
template <typename Work>
DWORD WithWide(hPDF handle, char const* name, Work work) {
  return Guarded(handle, DWORD{PDF_ERROR_MEMORY}, [&] { return work(ToWide(name).c_str()); });
}

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_FLAT_H_

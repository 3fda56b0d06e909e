// What the flat functions share: the session behind a handle, the result convention, and the guard
// that keeps exceptions for short memory inside the C interface.
#ifndef SORRELIN_FRAME_FLAT_H_
#define SORRELIN_FRAME_FLAT_H_

#include <sorrelin/frame/pdf.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/wide_string.h>

#include <cstdint>
#include <new>
#include <stdexcept>

namespace sorrelin {

// A handle has 64 bits on every system. An address of fewer is widened with zeros.
inline hPDF HandleOf(CCreatePDF* session) {
  return static_cast<hPDF>(reinterpret_cast<uintptr_t>(session));
}

// Null for the invalid handles 0 and -1, and for what is wider than an address. Callers may have
// widened an address with its sign.
inline CCreatePDF* SessionOf(hPDF handle) {
  uintptr_t const address = static_cast<uintptr_t>(handle);
  bool const fits = static_cast<hPDF>(address) == handle ||
                    static_cast<hPDF>(static_cast<intptr_t>(address)) == handle;
  return fits && address != UINTPTR_MAX ? reinterpret_cast<CCreatePDF*>(address) : nullptr;
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
  } catch (std::length_error const&) {
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

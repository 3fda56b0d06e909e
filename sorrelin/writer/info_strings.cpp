// Copies of information strings for callers.
#include <sorrelin/platform/text.h>
#include <sorrelin/writer/info_strings.h>

#include <algorithm>

namespace sorrelin {

Status CopyInfoString(WideString const& text, WCHAR* buffer, DWORD* size) {
  if (size == nullptr) return Status::Failed(PDF_ERROR_NULL_POINTER);
  DWORD const capacity = *size;
  *size = static_cast<DWORD>(text.size() + 1);
  if (buffer == nullptr) return Status::Ok();
  if (*size > capacity) return Status::Failed(PDF_ERROR_INSUFFICIENT_BUFFER);
  std::copy_n(text.c_str(), text.size() + 1, buffer);
  return Status::Ok();
}

Status CopyInfoString(WideString const& text, char* buffer, DWORD* size) {
  if (size == nullptr) return Status::Failed(PDF_ERROR_NULL_POINTER);
  DWORD const capacity = *size;
  int const needed = WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
  *size = static_cast<DWORD>(needed);
  if (buffer == nullptr) return Status::Ok();
  if (*size > capacity) return Status::Failed(PDF_ERROR_INSUFFICIENT_BUFFER);
  WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, buffer, needed, nullptr, nullptr);
  return Status::Ok();
}

}  // namespace sorrelin

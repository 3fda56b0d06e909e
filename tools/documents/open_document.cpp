// Documents opened by the library, whose error codes become problems.
#include "tools/documents/open_document.h"

#include <sorrelin/frame/string_error.h>
#include <sorrelin/platform/error.h>

#include <algorithm>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"
#include "tools/documents/qpdf_document.h"

namespace sorrelin::tool {
namespace {

constexpr DWORD kMaxListedPages = 30'000;

// The library throws on some damaged documents.
bool OpenFile(CCreatePDF& session, WideText const& name) {
  try {
    return session.OpenPDFFileW(name.c_str()) != 0;
  } catch (SorrelinStringError const&) {
    return false;
  }
}

std::string ErrorText(CCreatePDF& session) {
  char text[4096] = {};
  session.GetLastPDFErrorText(text);
  return text;
}

// Why a document could not be opened, and what to do about it.
std::string OpenProblem(CCreatePDF& session) {
  DWORD const error = session.PDF_GetLastError();
  if (error == PDF_ERROR_OPEN) return LastSystemError() + " (see that it can be read)";
  if (error == PDF_ERROR_VERSION) {
    return ErrorText(session) + " (qpdf --force-version=1.7 in.pdf out.pdf)";
  }
  bool const unclear = error == PDF_ERROR_NONE || error == PDF_ERROR_SYSTEM;
  return (unclear ? "it is damaged, or of a form that is not read" : ErrorText(session)) +
         kMendRemedy;
}

}  // namespace

std::unique_ptr<OpenDocument> OpenDocument::Open(std::string const& name, std::string& problem) {
  problem = NameProblem(name);
  if (!problem.empty()) return nullptr;
  std::unique_ptr<OpenDocument> document(new OpenDocument);
  CCreatePDF& session = *document->session_;
  session.PDF_SetLastError(PDF_ERROR_NONE);
  if (OpenFile(session, *Utf16(name))) return document;
  problem = "cannot be opened: " + OpenProblem(session);
  return nullptr;
}

DWORD OpenDocument::ListedPages() const {
  DWORD pages = std::min(PageCount(), kMaxListedPages);
  while (pages > 0 && session_->GetPageObjectNumber(pages - 1) == 0) --pages;
  return pages;
}

}  // namespace sorrelin::tool

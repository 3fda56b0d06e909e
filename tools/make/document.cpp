// Pages into the library's session: limits, and what its error codes mean to a user.
#include "tools/make/document.h"

#include <sorrelin/writer/creation_time.h>

#include <system_error>

#include "tools/cli/messages.h"

namespace sorrelin::tool {
namespace {

// Offsets in the cross-reference table are signed numbers of 32 bits; the table itself, with 20
// bytes for each of 90,050 objects, and what else closes a document fit into what is left below.
constexpr uint64_t kMaxDocumentBytes = (uint64_t{1} << 31) - (uint64_t{1} << 21);
// Everything of a page but its image and palette, generously.
constexpr uint64_t kPageFrameBytes = 1 << 14;

}  // namespace

bool Document::Create(std::filesystem::path const& path, Description const& description,
                      std::string& problem) {
  path_ = path;
  session_->SetTitleW(description.title.c_str());
  session_->SetAuthorW(description.author.c_str());
  session_->SetSubjectW(description.subject.c_str());
  session_->SetKeywordsW(description.keywords.c_str());
  if (description.created) SetCreationTime(*session_, *description.created);
  if (session_->CreatePDFW(path.u16string().c_str()) != 0) return true;
  problem = "cannot be created: " + SessionText() + kRoomRemedy;
  return false;
}

bool Document::Update(std::filesystem::path const& path, std::string& problem) {
  path_ = path;
  if (session_->CreatePDFW(path.u16string().c_str()) != 0) return true;
  if (session_->PDF_GetLastError() == PDF_ERROR_VERSION) {
    problem = std::string("keeps objects in object streams, and takes no pages") + kRewriteHint;
  } else {
    problem = "cannot be updated: " + SessionText() + kRoomRemedy;
  }
  return false;
}

PageResult Document::Add(CodedPage const& coded, std::string& problem) {
  std::error_code error;
  uint64_t const written = std::filesystem::file_size(path_, error);
  if (!error && written + coded.page().size + kPageFrameBytes > kMaxDocumentBytes) {
    problem = "does not fit: a document ends at 2 GiB (put the rest into another one)";
    return PageResult::kFull;
  }
  return WriteEncodedPage(*session_, coded.page()) ? PageResult::kWritten : Failure(problem);
}

bool Document::Finish(std::string& problem) {
  if (session_->FinishPDF() != 0) return true;
  problem = "cannot be written: " + SessionText() + kRoomRemedy;
  return false;
}

PageResult Document::Failure(std::string& problem) {
  switch (session_->PDF_GetLastError()) {
    case PDF_ERROR_TOO_MANY_PAGES:
    case PDF_ERROR_NEW_PAGE_OBJECT:
      problem = "does not fit: the document is full at " + std::to_string(PageCount()) +
                " pages (put the rest into another one)";
      return PageResult::kFull;
    default:
      problem = "cannot be written: " + SessionText() + kRoomRemedy;
      return PageResult::kBroken;
  }
}

std::string Document::SessionText() {
  char text[1024] = "";
  session_->GetLastPDFErrorText(text);
  return text;
}

}  // namespace sorrelin::tool

// Pages into the library's session: limits, and what its error codes mean to a user.
#include "tools/make/document.h"

#include <sorrelin/writer/creation_time.h>

#include <algorithm>
#include <system_error>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

// Offsets in the cross-reference table are signed numbers of 32 bits; the table itself, with 20
// bytes for each of 90,050 objects, and what else closes a document fit into what is left below.
constexpr uint64_t kMaxDocumentBytes = (uint64_t{1} << 31) - (uint64_t{1} << 21);
// Everything of a page but its image and palette, generously.
constexpr uint64_t kPageFrameBytes = 1 << 14;
// Profiles that are kept in memory to be found again.
constexpr size_t kMaxKnownProfiles = 64;

}  // namespace

bool Document::Create(std::filesystem::path const& path, Description const& description,
                      std::string& problem) {
  path_ = path;
  session_->SetTitleW(description.title.c_str());
  session_->SetAuthorW(description.author.c_str());
  session_->SetSubjectW(description.subject.c_str());
  session_->SetKeywordsW(description.keywords.c_str());
  if (description.created) SetCreationTime(*session_, *description.created);
  if (session_->CreatePDFW(WideName(path).c_str()) != 0) return true;
  problem = "cannot be created: " + SessionText() + kRoomRemedy;
  return false;
}

bool Document::Update(std::filesystem::path const& path, std::string& problem) {
  path_ = path;
  if (session_->CreatePDFW(WideName(path).c_str()) != 0) return true;
  if (session_->PDF_GetLastError() == PDF_ERROR_VERSION) {
    problem = std::string("keeps objects in object streams, and takes no pages") + kRewriteHint;
  } else {
    problem = "cannot be updated: " + SessionText() + kRoomRemedy;
  }
  return false;
}

PageResult Document::Add(CodedPage const& coded, std::string& problem) {
  EncodedPage page = coded.page();
  page.profile = SharedProfile(coded);
  bool const new_profile = page.profile != nullptr && page.profile->object == 0;
  uint64_t const bytes =
      page.size + kPageFrameBytes + (new_profile ? page.profile->stream.size() : 0);
  std::error_code error;
  uint64_t const written = std::filesystem::file_size(path_, error);
  if (!error && written + bytes > kMaxDocumentBytes) {
    problem = "does not fit: a document ends at 2 GiB (put the rest into another one)";
    return PageResult::kFull;
  }
  return WriteEncodedPage(*session_, page) ? PageResult::kWritten : Failure(problem);
}

// Pages with equal profiles share one object. Null if the page has none.
ColourProfile* Document::SharedProfile(CodedPage const& coded) {
  ProfileBytes const& bytes = coded.profile();
  if (bytes == nullptr) return nullptr;
  auto const known = std::find_if(profiles_.begin(), profiles_.end(), [&](KnownProfile const& one) {
    return one.bytes == bytes || *one.bytes == *bytes;
  });
  if (known != profiles_.end()) return &known->profile;
  if (profiles_.size() == kMaxKnownProfiles) profiles_.pop_front();
  profiles_.push_back({bytes, {flate_coder_.Compress(*bytes), ProfileComponents(*bytes), 0}});
  return &profiles_.back().profile;
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
  return WithoutLineEnd(text);
}

}  // namespace sorrelin::tool

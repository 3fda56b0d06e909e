// The document that pages are added to, one at a time.
#ifndef TOOLS_MAKE_DOCUMENT_H_
#define TOOLS_MAKE_DOCUMENT_H_

#include <sorrelin/frame/session.h>
#include <sorrelin/platform/process.h>

#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "tools/cli/text.h"
#include "tools/make/coding/flate_coder.h"
#include "tools/make/pages/page_coder.h"

namespace sorrelin::tool {

// Texts of the document's description; an empty one is left out.
struct Description {
  WideText title;
  WideText author;
  WideText subject;
  WideText keywords;
  std::optional<SYSTEMTIME> created;  // in place of the time of its making
};

// Units of UTF-16 that the library writes of a text; more would end the process.
inline constexpr size_t kMaxTextUnits = 252;
inline constexpr size_t kMaxKeywordsUnits = 251;

enum class PageResult {
  kWritten,
  kFull,   // the document takes no more pages and can be finished
  kBroken  // writing has failed, and the document is lost
};

class Document {
 public:
  Document() : session_(std::make_unique<CCreatePDF>()) {}
  ~Document() { session_->ClosePDFFile(); }
  Document(Document const&) = delete;
  Document& operator=(Document const&) = delete;

  // Each of these says in `problem` what went wrong.

  bool Create(std::filesystem::path const& path, Description const& description,
              std::string& problem);
  // Opens a document that exists; pages go after its own. PageCount counts both.
  bool Update(std::filesystem::path const& path, std::string& problem);
  PageResult Add(CodedPage const& coded, std::string& problem);
  bool Finish(std::string& problem);

  unsigned PageCount() { return session_->GetNumberOfPages(); }

 private:
  PageResult Failure(std::string& problem);
  ColourProfile* SharedProfile(CodedPage const& coded);
  std::string SessionText();

  // Large, as its tables are inside it.
  std::unique_ptr<CCreatePDF> session_;
  std::filesystem::path path_;
  // Those that pages have had, the latest last.
  struct KnownProfile {
    ProfileBytes bytes;
    ColourProfile profile;
  };
  std::list<KnownProfile> profiles_;
  FlateCoder flate_coder_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_DOCUMENT_H_

// The document that pages are added to, one at a time.
#ifndef TOOLS_DOCUMENT_H_
#define TOOLS_DOCUMENT_H_

#include <sorrelin/frame/session.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "tools/picture.h"
#include "tools/stored_image.h"

namespace sorrelin {
struct EncodedPage;
}

namespace sorrelin::tool {

enum class Compression { kAuto, kGroup4, kFlate, kRunLength, kJpeg, kNone };

// How pages are made of pictures.
struct PageStyle {
  Compression compression = Compression::kAuto;
  int quality = 0;                // of JPEG, 1 to 100; 0: the coder's usual one
  std::optional<Resolution> dpi;  // in place of the picture's own
};

// Texts of the document's description; an empty one is left out.
struct Description {
  std::u16string title;
  std::u16string author;
  std::u16string subject;
  std::u16string keywords;
};

// Units of UTF-16 that the library writes of a text; more would end the process.
inline constexpr size_t kMaxTextUnits = 252;
inline constexpr size_t kMaxKeywordsUnits = 251;

// What to do with a document whose form takes no pages; ends a problem.
inline constexpr char kRewriteHint[] =
    " (rewrite it first: qpdf --object-streams=disable in.pdf out.pdf)";

enum class PageResult {
  kWritten,
  kRefused,  // this page cannot be written; others can
  kFull,     // the document takes no more pages and can be finished
  kBroken    // writing has failed, and the document is lost
};

class Document {
 public:
  Document() : session_(std::make_unique<CCreatePDF>()) {}
  ~Document() { session_->ClosePDFFile(); }
  Document(Document const&) = delete;
  Document& operator=(Document const&) = delete;

  // Each of these tells in `problem` what went wrong.

  bool Create(std::filesystem::path const& path, Description const& description,
              std::string& problem);
  // Opens a document that exists; pages go behind its own. PageCount counts both.
  bool Update(std::filesystem::path const& path, std::string& problem);
  PageResult Add(StoredImage const& image, PageStyle const& style, std::string& problem);
  PageResult Add(Picture picture, PageStyle const& style, std::string& problem);
  bool Finish(std::string& problem);

  unsigned PageCount() { return session_->GetNumberOfPages(); }

 private:
  PageResult Encode(Picture picture, Compression compression, PageStyle const& style,
                    std::string& problem);
  PageResult Write(EncodedPage const& page, std::string& problem);
  PageResult Failure(std::string& problem);
  std::string SessionText();

  // Large, as its tables are inside it.
  std::unique_ptr<CCreatePDF> session_;
  std::filesystem::path path_;
};

// Whether an image in this coding may go in undecoded.
bool Accepts(Compression compression, StoredImage const& image);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENT_H_

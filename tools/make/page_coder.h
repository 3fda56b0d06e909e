// From a picture to the coded page that a document takes. No document is needed for it, so pages
// can be coded ahead of the writing, and several at once.
#ifndef TOOLS_MAKE_PAGE_CODER_H_
#define TOOLS_MAKE_PAGE_CODER_H_

#include <sorrelin/frame/session.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/writer/encoded_page.h>

#include <memory>
#include <optional>
#include <string>

#include "tools/formats/image_source.h"
#include "tools/formats/picture.h"
#include "tools/formats/stored_image.h"
#include "tools/make/page_record.h"
#include "tools/make/page_style.h"

namespace sorrelin::tool {

// A page that lacks nothing but its place in a document, with the blocks that it points to.
class CodedPage {
 public:
  CodedPage() = default;
  ~CodedPage();
  CodedPage(CodedPage const&) = delete;
  CodedPage& operator=(CodedPage const&) = delete;

  EncodedPage const& page() const { return page_; }
  PageRecord const& record() const { return record_; }
  // Has too little ink to go into the document.
  bool IsBlank() const { return is_blank_; }

 private:
  friend class PageCoder;

  EncodedPage page_;
  PageRecord record_;
  bool is_blank_ = false;
  std::shared_ptr<void const> stored_;
  OwnedBlock encoded_;  // locked while the page points to it
  OwnedBlock palette_;
};

// Codes pages, for one thread at a time. The same picture gives the same bytes from every coder.
class PageCoder {
 public:
  // `style` outlives the coder.
  explicit PageCoder(PageStyle const& style);
  ~PageCoder();
  PageCoder(PageCoder const&) = delete;
  PageCoder& operator=(PageCoder const&) = delete;

  // Each gives null with the reason in `problem` for a picture that cannot become a page.

  // Page `page` of a file, undecoded where the style allows it.
  std::unique_ptr<CodedPage> Code(ImageSource& source, int page, std::string& problem);
  std::unique_ptr<CodedPage> Code(StoredImage const& image, std::string& problem);
  std::unique_ptr<CodedPage> Code(Picture picture, std::string& problem);

 private:
  std::unique_ptr<CodedPage> BlankPage(ImageSource& source, int page);
  std::unique_ptr<CodedPage> CodeStored(ImageSource& source, int page, std::string& problem);
  std::unique_ptr<CodedPage> CodeDecoded(ImageSource& source, int page, std::string& problem);
  bool Place(int width, int height, Resolution own, CodedPage& coded, std::string& problem);
  bool Encode(OwnedBlock dib, bool jpeg, CodedPage& coded, std::string& problem);
  std::string Reason();

  PageStyle const& style_;
  // Without a document: only its coders are used. Large, as its tables are inside it.
  std::unique_ptr<CCreatePDF> session_;
};

// Whether an image in this coding may go in undecoded.
bool Accepts(Compression compression, StoredImage const& image);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGE_CODER_H_

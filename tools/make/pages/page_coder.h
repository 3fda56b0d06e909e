// From a picture to the coded page that a document takes. No document is needed for it, so pages
// can be coded ahead of the writing, and several at once.
#ifndef TOOLS_MAKE_PAGES_PAGE_CODER_H_
#define TOOLS_MAKE_PAGES_PAGE_CODER_H_

#include <sorrelin/platform/block.h>
#include <sorrelin/writer/encoded_page.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/formats/image_source.h"
#include "tools/formats/picture/picture.h"
#include "tools/formats/picture/stored_image.h"
#include "tools/make/coding/bitmap_coder.h"
#include "tools/make/coding/flate_coder.h"
#include "tools/make/pages/page_record.h"
#include "tools/make/pages/page_style.h"

namespace sorrelin::tool {

// A page that lacks nothing but its place in a document, with the blocks that it points to.
class CodedPage {
 public:
  CodedPage() = default;
  CodedPage(CodedPage const&) = delete;
  CodedPage& operator=(CodedPage const&) = delete;

  EncodedPage const& page() const { return page_; }
  PageRecord const& record() const { return record_; }

  // Has too little ink to go into the document.
  bool IsBlank() const { return is_blank_; }

  // The profile of its colours, which pages of a document share. Null: none.
  ProfileBytes const& profile() const { return profile_; }

 private:
  friend class PageCoder;

  EncodedPage page_;
  PageRecord record_;
  bool is_blank_ = false;
  ImageForm form_;
  ProfileBytes profile_;
  std::shared_ptr<void const> stored_;
  CodedBitmap bitmap_;
  OwnedBlock grey_palette_;
  std::vector<BYTE> stream_;
};

// Codes pages, for one thread at a time. The same picture gives the same bytes from every coder.
class PageCoder {
 public:
  // `style` outlives the coder.
  explicit PageCoder(PageStyle const& style) : style_(style) {}
  PageCoder(PageCoder const&) = delete;
  PageCoder& operator=(PageCoder const&) = delete;

  // Each gives null with the reason in `problem` for a picture that cannot become a page.

  // Page `page` of a file, undecoded where the style allows it.
  std::unique_ptr<CodedPage> Code(ImageSource& source, int page, std::string& problem);
  std::unique_ptr<CodedPage> Code(StoredImage const& image, std::string& problem);
  std::unique_ptr<CodedPage> Code(Picture picture, std::string& problem);

 private:
  // How a picture is on its page before it is coded: its size as stored, resolution as stored,
  // orientation, and the page around it.
  struct Shape {
    int width = 0;
    int height = 0;
    Resolution dpi;
    int orientation = 1;
    std::optional<PageFrame> frame;
  };

  std::unique_ptr<CodedPage> BlankPage(ImageSource& source, int page);
  std::unique_ptr<CodedPage> CodeStored(ImageSource& source, int page, std::string& problem);
  std::unique_ptr<CodedPage> CodeDecoded(ImageSource& source, int page, std::string& problem);
  bool Place(Shape shape, CodedPage& coded, std::string& problem);
  bool CodeBitmap(Picture picture, Compression compression, CodedPage& coded, std::string& problem);
  bool CodeSamples(Picture picture, CodedPage& coded, std::string& problem);
  bool CodeBilevel(Picture picture, CodedPage& coded, std::string& problem);
  // In place of a page's Group 4 data. Both are false with the page as it was if they are not.
  bool FlateIfSmaller(OwnedBlock const& dib, CodedPage& coded, std::string& problem);
  bool FlateIfSmaller(Samples const& samples, Picture& picture, CodedPage& coded);
  void SetBitmap(CodedBitmap bitmap, int depth, Compression compression, CodedPage& coded);
  void SetBitmapForm(int depth, Compression compression, ProfileBytes profile, CodedPage& coded);
  void SetForm(ImageForm form, ProfileBytes profile, CodedPage& coded);
  void SetStream(std::vector<BYTE> stream, CodedPage& coded);
  bool FitsAPage(double width, double height, Resolution dpi, std::string& problem) const;

  PageStyle const& style_;
  BitmapCoder bitmap_coder_;
  FlateCoder flate_coder_;
};

// Whether an image in this coding may go in undecoded.
bool Accepts(Compression compression, StoredImage const& image);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_CODER_H_

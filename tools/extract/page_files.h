// The pictures of a document's pages as picture files. Used in the child.
#ifndef TOOLS_EXTRACT_PAGE_FILES_H_
#define TOOLS_EXTRACT_PAGE_FILES_H_

#include <memory>
#include <string>
#include <tuple>

#include "tools/documents/qpdf_document.h"
#include "tools/extract/output/picture_writer.h"
#include "tools/extract/page/page_judge.h"
#include "tools/extract/page_transfer.h"

namespace sorrelin::tool {

struct FileOptions {
  std::string document;
  std::string password;
  FileFormat format = FileFormat::kKeep;
  bool all = false;        // every picture of a page, and not only pages that are one picture
  bool as_stored = false;  // not turned as viewers show it

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.document, self.password, self.format, self.all, self.as_stored);
  }
};

class PageFiles : public PageSource {
 public:
  // `options` outlive the source.
  static std::unique_ptr<PageSource> Open(FileOptions const& options, std::string& problem);

  DWORD PageCount() override { return document_->ListedPages(); }
  void Read(DWORD page, PictureSender& sender) override;

 private:
  PageFiles(FileOptions const& options, std::unique_ptr<QpdfDocument> document)
      : options_(options), document_(std::move(document)) {}
  void SendPicture(PagePicture const& picture, DWORD number, PictureSender& sender);
  bool WriteFile(PagePicture const& picture, DWORD number, PictureSender& sender,
                 std::string& problem);

  FileOptions const& options_;
  std::unique_ptr<QpdfDocument> document_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_FILES_H_

// A session that has a built document open, in memory.
#ifndef TESTS_SUPPORT_PAGE_DOCUMENT_H_
#define TESTS_SUPPORT_PAGE_DOCUMENT_H_

#include <sorrelin/frame/session.h>
#include <tests/support/dib_content.h>
#include <tests/support/pdf_builder.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace test {

class PageDocument {
 public:
  // Writes the classic section and opens the document. The last error is 0 then.
  explicit PageDocument(PdfBuilder& pdf, ClassicOptions const& options = {})
      : session_(std::make_unique<CCreatePDF>()) {
    pdf.Classic(options);
    bytes_ = pdf.Document();
    int64_t const address = reinterpret_cast<int64_t>(bytes_.data());
    if (session_->OpenPDFFileInMemory(address, static_cast<DWORD>(bytes_.size())) == 0) {
      throw std::runtime_error("open");
    }
    session_->PDF_SetLastError(PDF_ERROR_NONE);
  }
  ~PageDocument() { session_->ClosePDFFile(); }
  PageDocument(PageDocument const&) = delete;
  PageDocument& operator=(PageDocument const&) = delete;

  CCreatePDF& operator*() const { return *session_; }
  CCreatePDF* operator->() const { return session_.get(); }
  Block Load(DWORD page = 0) { return Block(session_->LoadImageFromPDF(page)); }

 private:
  Bytes bytes_;
  std::unique_ptr<CCreatePDF> session_;
};

// What a page of one image consists of: catalog 1, pages root 2, page 3, image 4, content 5.
struct OnePage {
  std::string page = "/MediaBox [0 0 100 100] /Resources <</XObject <</Im0 4 0 R >> >>";
  std::string image = "/Subtype/Image /Width 8 /Height 2 /BitsPerComponent 1";
  std::string data = "AB";
  std::string length = {};   // of the image; else the true one
  std::string content = {};  // a text that the page draws by; empty: no content stream
  std::string eol = "\n";

  PdfBuilder Build() const {
    PdfBuilder pdf("%PDF-1.4", eol);
    pdf.Object(1, "<</Type/Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<</Type/Pages /Kids [3 0 R ] /Count 1 >>");
    std::string const contents = content.empty() ? "" : " /Contents 5 0 R";
    pdf.Object(3, "<</Type/Page /Parent 2 0 R " + page + contents + " >>");
    pdf.Stream(4, image, data, length);
    if (!content.empty()) pdf.Stream(5, "", content);
    return pdf;
  }
};

}  // namespace test

#endif  // TESTS_SUPPORT_PAGE_DOCUMENT_H_

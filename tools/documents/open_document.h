// A document that the library has open for reading.
#ifndef TOOLS_DOCUMENTS_OPEN_DOCUMENT_H_
#define TOOLS_DOCUMENTS_OPEN_DOCUMENT_H_

#include <sorrelin/frame/session.h>

#include <memory>
#include <string>

namespace sorrelin::tool {

class OpenDocument {
 public:
  // Null with the reason in `problem` if the library cannot open it.
  static std::unique_ptr<OpenDocument> Open(std::string const& name, std::string& problem);
  ~OpenDocument() { session_->ClosePDFFile(); }
  OpenDocument(OpenDocument const&) = delete;
  OpenDocument& operator=(OpenDocument const&) = delete;

  // As the document states it.
  DWORD PageCount() const { return session_->GetNumberOfPages(); }
  // Pages that can be reached; at most PageCount.
  DWORD ListedPages() const;

 private:
  OpenDocument() : session_(std::make_unique<CCreatePDF>()) {}

  std::unique_ptr<CCreatePDF> session_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_OPEN_DOCUMENT_H_

// A document that is open for reading.
#ifndef TOOLS_DOCUMENTS_OPEN_DOCUMENT_H_
#define TOOLS_DOCUMENTS_OPEN_DOCUMENT_H_

#include <sorrelin/frame/session.h>

#include <memory>
#include <string>

#include "tools/extract/page_image.h"
#include "tools/extract/page_picture.h"

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
  // Its texts and pictures cannot be read then; the library would take them as they are.
  bool IsEncrypted() const { return encrypted_; }
  // Whether the last trailer can be read by all its keys; the library looks for some of them only.
  bool HasWholeTrailer() const { return whole_trailer_; }

  // Texts of the description, as UTF-8; empty if there is none.
  std::string Title() const;
  std::string Author() const;
  std::string Subject() const;
  std::string Keywords() const;

  // Pages count from 0.
  PageFacts Judge(DWORD page) const;
  bool Decode(PageFacts const& facts, PictureSink& sink, std::string& problem) const {
    return DecodePicture(*session_, *facts.image, facts.dpi, sink, problem);
  }

 private:
  using Getter = int (CCreatePDF::*)(WCHAR*, DWORD*);

  OpenDocument() : session_(std::make_unique<CCreatePDF>()) {}
  std::string Text(Getter getter) const;

  std::unique_ptr<CCreatePDF> session_;
  std::unique_ptr<PageJudge> judge_;
  bool encrypted_ = false;
  bool whole_trailer_ = false;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_OPEN_DOCUMENT_H_

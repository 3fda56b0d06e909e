// A document that libqpdf has open, to be written anew with changes.
#ifndef TOOLS_OCR_CHANGEABLE_DOCUMENT_H_
#define TOOLS_OCR_CHANGEABLE_DOCUMENT_H_

#include <functional>
#include <memory>
#include <qpdf/QPDF.hh>
#include <string>
#include <vector>

#include "tools/documents/qpdf_document.h"

namespace sorrelin::tool {

// libqpdf ends the process on no document, but takes long on some: for use in a child.
class ChangeableDocument {
 public:
  // Null with the reason in `problem` if it cannot be read, or if it is encrypted or signed.
  static std::unique_ptr<ChangeableDocument> Open(std::string const& name, std::string& problem);
  ChangeableDocument(ChangeableDocument const&) = delete;
  ChangeableDocument& operator=(ChangeableDocument const&) = delete;

  unsigned PageCount() const { return static_cast<unsigned>(pages_.size()); }
  // Pages count from 0.
  QPDFObjectHandle Page(unsigned page) const { return pages_.at(page); }
  QPDF& qpdf() { return qpdf_; }

 private:
  ChangeableDocument() = default;
  bool IsSigned();

  QPDF qpdf_;
  std::vector<QPDFObjectHandle> pages_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_CHANGEABLE_DOCUMENT_H_

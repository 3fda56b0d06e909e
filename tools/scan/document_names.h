// The names of the documents of one run.
#ifndef TOOLS_SCAN_DOCUMENT_NAMES_H_
#define TOOLS_SCAN_DOCUMENT_NAMES_H_

#include <optional>
#include <string>

#include "tools/documents/page_selection.h"

namespace sorrelin::tool {

// A name with a number, as in letter-%03d.pdf, stands for new documents: each has the first number
// after the one before that no file has. Any other name is that of one document.
class DocumentNames {
 public:
  explicit DocumentNames(std::string name);

  bool IsPattern() const { return pattern_.has_value(); }

  // The document that the next page belongs to.
  std::string const& Current();
  // Lets another document begin with the next page, where there can be several.
  void EndDocument() { is_begun_ = !IsPattern(); }

 private:
  std::string name_;
  std::optional<NamePattern> pattern_;
  DWORD number_ = 0;
  bool is_begun_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_DOCUMENT_NAMES_H_

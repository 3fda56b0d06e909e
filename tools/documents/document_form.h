// The form of a document that pages are to be added to, and its change into one that takes them.
#ifndef TOOLS_DOCUMENTS_DOCUMENT_FORM_H_
#define TOOLS_DOCUMENTS_DOCUMENT_FORM_H_

#include <optional>
#include <string>

namespace sorrelin::tool {

struct DocumentForm {
  bool encrypted = false;
  bool has_signatures = false;  // which any change would void
  // Why the library cannot add pages, or would damage the document, with a remedy; empty if nothing
  // is known against it.
  std::string obstacle;
  // The keys of the catalog that the library does not write, as a dictionary.
  std::string catalog_keys = "<< >>";
};

// nullopt with the reason in `problem` if libqpdf cannot read the document. Call it in a child.
std::optional<DocumentForm> ReadForm(std::string const& name, std::string& problem);

// Writes the document anew in the form that the library updates: a table, no object streams, at
// most version 1.7. False with the reason in `problem`. Call it in a child.
bool RewriteDocument(std::string const& from, std::string const& to, std::string& problem);

// Writes the document anew with these keys of the catalog, where it does not have them.
bool RestoreCatalog(std::string const& from, std::string const& catalog_keys, std::string const& to,
                    std::string& problem);

// Whether the document's tables are sound and lead to so many pages. Call it in a child.
bool IsSound(std::string const& name, unsigned pages);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_DOCUMENT_FORM_H_

// One run that adds pages to a document that exists.
#ifndef TOOLS_MAKE_UPDATE_DOCUMENT_H_
#define TOOLS_MAKE_UPDATE_DOCUMENT_H_

#include "tools/make/document.h"
#include "tools/make/pages/page_options.h"

namespace sorrelin::tool {

struct UpdateOptions {
  PageOptions pages;
  bool in_place = false;
  bool no_rewrite = false;
  Description description = {};  // of a document that does not exist yet
};

// Adds a page for each picture, naming on standard error what cannot become one, and returns the
// exit code. The pages are added to a copy, which takes the document's place when it is whole; or,
// in place, to the document itself, which is cut back to what it was after a failure. A document
// that the change would damage is rewritten first, in the copy, or left alone where that is not
// wanted. A run that leaves out all pages as blank is done, and the document is as it was.
int UpdateDocument(UpdateOptions const& options);

// The same, or makes the document if it does not exist.
int AppendPages(UpdateOptions const& options);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_UPDATE_DOCUMENT_H_

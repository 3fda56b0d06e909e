// One run that makes a document: from files to pages.
#ifndef TOOLS_MAKE_MAKE_DOCUMENT_H_
#define TOOLS_MAKE_MAKE_DOCUMENT_H_

#include "tools/make/document.h"
#include "tools/make/pages/page_options.h"
#include "tools/make/run_report.h"

namespace sorrelin::tool {

struct MakeOptions {
  PageOptions pages;
  Description description;
  bool force = false;         // replace the document if it exists
  bool may_be_blank = false;  // no document is needed if all pages are blank
};

// Writes the document, naming on standard error what cannot become a page of it, and returns the
// exit code. `report`, if not null, becomes the report of the run.
int MakeDocument(MakeOptions const& options, RunReport* report = nullptr);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_MAKE_DOCUMENT_H_

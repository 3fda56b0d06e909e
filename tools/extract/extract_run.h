// One run that writes the pictures of a document's pages as files.
#ifndef TOOLS_EXTRACT_EXTRACT_RUN_H_
#define TOOLS_EXTRACT_EXTRACT_RUN_H_

#include "tools/documents/page_selection.h"
#include "tools/extract/page_files.h"

namespace sorrelin::tool {

struct ExtractOptions {
  FileOptions files;
  PageSelection pages;
  NamePattern pattern;  // of files kept as they are without the extension
  int jobs = 1;         // readers that work side by side
  bool force = false;
  bool json = false;
  bool quiet = false;
};

// Writes the files, naming on standard error what cannot be written, and returns the exit code. Any
// number of jobs writes the same files.
int ExtractPictures(ExtractOptions const& options);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_EXTRACT_RUN_H_

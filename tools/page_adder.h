// Pictures of files on their way into a document, with a word about each that fails.
#ifndef TOOLS_PAGE_ADDER_H_
#define TOOLS_PAGE_ADDER_H_

#include <string>

#include "tools/document.h"
#include "tools/image_source.h"
#include "tools/page_options.h"
#include "tools/progress.h"

namespace sorrelin::tool {

class PageAdder {
 public:
  // The options stay the caller's.
  explicit PageAdder(PageOptions const& options) : options_(options), progress_(!options.quiet) {}

  // Adds a page for each picture and names the files that have none. False if the document is lost.
  bool AddImages(Document& document);

  // Says on standard error what is wrong with a file, or with the document.
  void Report(std::string const& name, std::string const& problem);
  void ReportDocument(std::string const& problem) { Report(options_.output, problem); }

  // Whether anything was reported.
  bool failed() const { return failed_; }

 private:
  PageResult AddImage(Document& document, std::string const& name);
  PageResult AddPage(Document& document, ImageSource& source, int page, std::string& problem);
  void ReportRest();
  // `share` is what is done of the current image.
  void ShowProgress(double share);

  PageOptions const& options_;
  Progress progress_;
  size_t done_ = 0;
  bool failed_ = false;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_PAGE_ADDER_H_

// Adds the pictures of files to a document and reports each that fails.
#ifndef TOOLS_MAKE_PAGES_PAGE_ADDER_H_
#define TOOLS_MAKE_PAGES_PAGE_ADDER_H_

#include <cstdint>
#include <string>

#include "tools/cli/progress.h"
#include "tools/make/document.h"
#include "tools/make/pages/page_feed.h"
#include "tools/make/pages/page_options.h"
#include "tools/make/run_report.h"

namespace sorrelin::tool {

class PageAdder {
 public:
  // The options stay the caller's.
  explicit PageAdder(PageOptions const& options) : options_(options), progress_(!options.quiet) {
    for (std::string const& name : options.ignored) report_.AddIgnored(name);
  }

  // Adds a page for each picture and names the files that have none. False if the document is lost.
  bool AddImages(Document& document);

  // Says on standard error what is wrong with a file, or with the document. `page` is counted from
  // 1; 0: the problem is the file's.
  void Report(std::string const& name, int page, std::string const& problem);
  void ReportDocument(std::string const& problem);
  // What is wrong with a page of the document, counted from 1.
  void ReportPage(int page, std::string const& problem);

  // The document is complete.
  void NoteWritten(unsigned pages, uint64_t bytes) { report_.NoteWritten(pages, bytes); }

  // Takes the bar away, says what was changed, and prints the report if one is wanted.
  void Finish();

  // Whether anything was reported.
  bool failed() const { return failed_; }
  // Whether pages were left out as blank, and neither a page nor a problem was found.
  bool IsAllBlank() const { return found_blank_ && !found_page_ && !failed_; }

  RunReport const& report() const { return report_; }

 private:
  PageResult AddPage(Document& document, FeedItem const& item);
  void ReportItem(FeedItem const& item, std::string const& problem);
  void ReportRest(size_t last);
  void ShowProgress(FeedItem const& item);
  void NoteBlank(FeedItem const& item);
  void NotePage(Document& document, FeedItem const& item);

  PageOptions const& options_;
  Progress progress_;
  bool failed_ = false;
  bool found_blank_ = false;
  bool found_page_ = false;
  RunReport report_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_ADDER_H_

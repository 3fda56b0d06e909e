// Pictures of files on their way into a document, with a word about each that fails.
#ifndef TOOLS_MAKE_PAGE_ADDER_H_
#define TOOLS_MAKE_PAGE_ADDER_H_

#include <cstdint>
#include <optional>
#include <string>

#include "tools/cli/progress.h"
#include "tools/make/document.h"
#include "tools/make/page_feed.h"
#include "tools/make/page_options.h"

namespace sorrelin::tool {

class PageAdder {
 public:
  // The options stay the caller's.
  explicit PageAdder(PageOptions const& options) : options_(options), progress_(!options.quiet) {}

  // Adds a page for each picture and names the files that have none. False if the document is lost.
  bool AddImages(Document& document);

  // Says on standard error what is wrong with a file, or with the document. `page` is counted from
  // 1; 0: the problem is the file's.
  void Report(std::string const& name, int page, std::string const& problem);
  void ReportDocument(std::string const& problem);

  // Tells for the report that the document stands.
  void NoteWritten(unsigned pages, uint64_t bytes) { written_ = {pages, bytes}; }

  // Takes the bar away, and prints the report if one is wanted.
  void Finish();

  // Whether anything was reported.
  bool failed() const { return failed_; }

 private:
  struct Written {
    unsigned pages = 0;
    uint64_t bytes = 0;
  };

  PageResult AddPage(Document& document, FeedItem const& item);
  void ReportItem(FeedItem const& item, std::string const& problem);
  void ReportRest(size_t last);
  void ShowProgress(FeedItem const& item);
  std::string ReportText() const;

  PageOptions const& options_;
  Progress progress_;
  bool failed_ = false;
  std::optional<Written> written_;
  std::string problems_;  // as members of an array, for the report
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGE_ADDER_H_

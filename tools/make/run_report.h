// The report of one run: pages, problems, and files passed over.
#ifndef TOOLS_MAKE_RUN_REPORT_H_
#define TOOLS_MAKE_RUN_REPORT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/make/pages/page_record.h"

namespace sorrelin::tool {

class RunReport {
 public:
  void AddPage(PageRecord record) { pages_.push_back(std::move(record)); }
  // `page` is counted from 1; 0: the problem is the file's.
  void AddProblem(std::string const& name, int page, std::string const& problem);
  void AddIgnored(std::string name) { ignored_.push_back(std::move(name)); }
  // The document is complete; `pages` counts those that it had before as well.
  void NoteWritten(unsigned pages, uint64_t bytes) { written_ = {pages, bytes}; }

  // One line for each kind of change, as in "transparency laid on white: pages 2, 7-9". Empty if no
  // document was written.
  std::vector<std::string> ChangeLines() const;

  // The report as JSON, with its line end.
  std::string Json(std::string const& document) const;

  struct Written {
    unsigned pages = 0;
    uint64_t bytes = 0;
  };
  struct Problem {
    std::string name;
    int page = 0;
    std::string text;
  };
  // nullopt if no document was written.
  std::optional<Written> const& written() const { return written_; }
  std::vector<Problem> const& problems() const { return problems_; }

 private:
  std::vector<PageRecord> pages_;
  std::vector<Problem> problems_;
  std::vector<std::string> ignored_;
  std::optional<Written> written_;
};

// Ascending numbers with runs drawn together: "page 2" or "pages 2, 7-9".
std::string PageRanges(std::vector<unsigned> const& pages);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_RUN_REPORT_H_

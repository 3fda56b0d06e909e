// Takes coded pages from the feed and writes them; problems are reported in the order of the pages.
#include "tools/make/pages/page_adder.h"

#include <cstdio>

#include "tools/cli/messages.h"
#include "tools/formats/byte_stream.h"

namespace sorrelin::tool {
namespace {

std::string ShownName(Input const& input) {
  if (!input.shown.empty()) return input.shown;
  return input.name == kStandardInput ? "standard input" : input.name;
}

}  // namespace

bool PageAdder::AddImages(Document& document) {
  PageFeed feed(options_.inputs, options_.style, options_.jobs);
  while (auto const item = feed.Next()) {
    PageResult const result = AddPage(document, *item);
    if (result == PageResult::kBroken) return false;
    if (result == PageResult::kFull) {
      ReportRest(item->input);
      return true;
    }
    ShowProgress(*item);
  }
  return true;
}

PageResult PageAdder::AddPage(Document& document, FeedItem const& item) {
  if (item.result.page == nullptr) {
    ReportItem(item, item.result.problem);
    return PageResult::kWritten;
  }
  if (item.result.page->IsBlank()) {
    found_blank_ = true;
    NoteBlank(item);
    return PageResult::kWritten;
  }
  found_page_ = true;
  std::string problem;
  PageResult const result = document.Add(*item.result.page, problem);
  if (result == PageResult::kBroken) ReportDocument(problem);
  if (result == PageResult::kFull) ReportItem(item, problem);
  if (result == PageResult::kWritten) NotePage(document, item);
  return result;
}

void PageAdder::NoteBlank(FeedItem const& item) {
  char share[64];
  std::snprintf(share, sizeof share, "is blank and left out: %.3f percent ink (limit %.2f)",
                item.result.page->record().ink_percent, kBlankPercent);
  std::string const page = item.pages > 1 ? "page " + std::to_string(item.page) + ": " : "";
  std::string const name = ShownName(options_.inputs[item.input]);
  progress_.Clear();
  PrintNote(name + ": " + page + share);
  report_.AddIgnored(page.empty() ? name : name + ", page " + std::to_string(item.page));
}

void PageAdder::NotePage(Document& document, FeedItem const& item) {
  PageRecord record = item.result.page->record();
  Input const& input = options_.inputs[item.input];
  record.file = input.shown.empty() ? input.name : input.shown;
  record.page_of_file = item.page;
  record.page = document.PageCount();
  if (!record.damage.empty()) {
    ReportItem(item, "is damaged, and kept as far as it could be read: " + record.damage +
                         " (scan or save it again)");
  }
  if (options_.verbose) {
    progress_.Clear();
    PrintNote(ShownName(options_.inputs[item.input]) + ": " + LineOf(record));
  }
  report_.AddPage(std::move(record));
}

void PageAdder::Report(std::string const& name, int page, std::string const& problem) {
  progress_.Clear();
  std::string const place = page > 0 ? "page " + std::to_string(page) + ": " : "";
  PrintProblem(name, place + problem);
  failed_ = true;
  report_.AddProblem(name, page, problem);
}

void PageAdder::ReportDocument(std::string const& problem) { ReportPage(0, problem); }

void PageAdder::ReportPage(int page, std::string const& problem) {
  Report(options_.output == kStandardOutput ? "standard output" : options_.output, page, problem);
}

// Names the page where the file has several.
void PageAdder::ReportItem(FeedItem const& item, std::string const& problem) {
  Report(ShownName(options_.inputs[item.input]), item.pages > 1 ? item.page : 0, problem);
}

void PageAdder::ReportRest(size_t last) {
  size_t const rest = options_.inputs.size() - last - 1;
  std::string const files = rest == 1 ? " further file is" : " further files are";
  if (rest > 0) {
    ReportDocument(std::to_string(rest) + files + " left out (put the rest into another document)");
  }
}

void PageAdder::ShowProgress(FeedItem const& item) {
  double const share = item.last ? 1.0 : static_cast<double>(item.page) / item.pages;
  progress_.Update((static_cast<double>(item.input) + share) /
                   static_cast<double>(options_.inputs.size()));
}

void PageAdder::Finish() {
  progress_.Clear();
  if (!options_.quiet) {
    for (std::string const& line : report_.ChangeLines()) PrintNote(line);
  }
  if (options_.json) std::fputs(report_.Json(options_.output).c_str(), stdout);
}

}  // namespace sorrelin::tool

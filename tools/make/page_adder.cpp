// Takes coded pages from the feed and writes them; problems are told in the order of the pages.
#include "tools/make/page_adder.h"

#include <cstdio>

#include "tools/cli/json.h"
#include "tools/cli/messages.h"
#include "tools/formats/image_source.h"

namespace sorrelin::tool {

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
  std::string problem;
  PageResult const result = document.Add(*item.result.page, problem);
  if (result == PageResult::kBroken) ReportDocument(problem);
  if (result == PageResult::kFull) ReportItem(item, problem);
  return result;
}

void PageAdder::Report(std::string const& name, int page, std::string const& problem) {
  progress_.Clear();
  std::string const place = page > 0 ? "page " + std::to_string(page) + ": " : "";
  PrintProblem(name, place + problem);
  failed_ = true;
  if (!options_.json) return;
  JsonObject json(4);
  json.Add("file", JsonString(name));
  json.Add("page", page > 0 ? std::to_string(page) : "null");
  json.Add("problem", JsonString(problem));
  problems_ += (problems_.empty() ? "\n    " : ",\n    ") + json.Finish();
}

void PageAdder::ReportDocument(std::string const& problem) {
  Report(options_.output == kStandardOutput ? "standard output" : options_.output, 0, problem);
}

// Names the page where the file has several.
void PageAdder::ReportItem(FeedItem const& item, std::string const& problem) {
  std::string const& name = options_.inputs[item.input].name;
  Report(name == kStandardInput ? "standard input" : name, item.pages > 1 ? item.page : 0, problem);
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
  if (options_.json) std::fputs(ReportText().c_str(), stdout);
}

std::string PageAdder::ReportText() const {
  Written const written = written_.value_or(Written{});
  JsonObject json(0);
  json.Add("document", JsonString(options_.output));
  json.Add("written", written_ ? "true" : "false");
  json.Add("pages", std::to_string(written.pages));
  json.Add("bytes", std::to_string(written.bytes));
  json.Add("problem", problems_.empty() ? "[]" : "[" + problems_ + "\n  ]");
  return json.Finish() + "\n";
}

}  // namespace sorrelin::tool

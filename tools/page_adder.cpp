// One file after the other, one page after the other.
#include "tools/page_adder.h"

#include <memory>

#include "tools/messages.h"

namespace sorrelin::tool {

void PageAdder::Report(std::string const& name, std::string const& problem) {
  progress_.Clear();
  PrintProblem(name == kStandardInput ? "standard input" : name, problem);
  failed_ = true;
}

bool PageAdder::AddImages(Document& document) {
  for (done_ = 0; done_ < options_.images.size(); ++done_) {
    PageResult const result = AddImage(document, options_.images[done_]);
    if (result == PageResult::kBroken) return false;
    if (result == PageResult::kFull) {
      ReportRest();
      return true;
    }
    ShowProgress(1.0);
  }
  return true;
}

PageResult PageAdder::AddImage(Document& document, std::string const& name) {
  std::string problem;
  auto const source = OpenImage(name, problem);
  if (source == nullptr) {
    Report(name, problem);
    return PageResult::kRefused;
  }
  int const pages = source->PageCount();
  for (int page = 0; page < pages; ++page) {
    PageResult const result = AddPage(document, *source, page, problem);
    if (result == PageResult::kBroken) {
      Report(options_.output, problem);
      return result;
    }
    std::string const place = pages > 1 ? "page " + std::to_string(page + 1) + ": " : "";
    if (result != PageResult::kWritten) Report(name, place + problem);
    if (result == PageResult::kFull) return result;
    ShowProgress((page + 1.0) / pages);
  }
  if (std::string const damage = source->Damage(); !damage.empty()) Report(name, damage);
  return PageResult::kWritten;
}

PageResult PageAdder::AddPage(Document& document, ImageSource& source, int page,
                              std::string& problem) {
  if (!options_.recode) {
    auto const stored = source.Stored(page);
    if (stored && Accepts(options_.style.compression, *stored)) {
      return document.Add(*stored, options_.style, problem);
    }
  }
  auto picture = source.Decode(page);
  if (picture) return document.Add(std::move(*picture), options_.style, problem);
  problem = "cannot be decoded: it is damaged, too large, or of a kind that is not read";
  return PageResult::kRefused;
}

void PageAdder::ReportRest() {
  size_t const rest = options_.images.size() - done_ - 1;
  std::string const files = rest == 1 ? " further file is" : " further files are";
  if (rest > 0) Report(options_.output, std::to_string(rest) + files + " left out");
}

void PageAdder::ShowProgress(double share) {
  progress_.Update((static_cast<double>(done_) + share) /
                   static_cast<double>(options_.images.size()));
}

}  // namespace sorrelin::tool

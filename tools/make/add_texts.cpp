// Adds text layers; their problems are reported like those of the pages' pictures.
#include "tools/make/add_texts.h"

#include <numeric>
#include <vector>

#include "tools/ocr/ocr_run.h"
#include "tools/ocr/page_texts.h"

namespace sorrelin::tool {

bool CheckTexts(PageOptions const& options, PageAdder& adder) {
  std::string problem;
  if (!options.ocr.IsWanted() || CheckOcr(options.ocr, problem)) return true;
  adder.Report(options.ocr.languages.empty() ? "--orientation" : "--ocr", 0, problem);
  return false;
}

bool AddTexts(std::filesystem::path const& path, unsigned first, unsigned end,
              PageOptions const& options, PageAdder& adder, std::string& problem) {
  if (!options.ocr.IsWanted()) return true;
  std::vector<unsigned> pages(end - first);
  std::iota(pages.begin(), pages.end(), first);
  auto const report = [&](int page, std::string const& reason) { adder.ReportPage(page, reason); };
  OcrRun const run = {options.ocr, options.jobs, options.quiet, report};
  return AddText(path, pages, run, problem) != OcrResult::kFailed;
}

}  // namespace sorrelin::tool

// One run of text recognition over a document: pages recognised, layers laid, problems reported.
#ifndef TOOLS_OCR_OCR_RUN_H_
#define TOOLS_OCR_OCR_RUN_H_

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tools/ocr/ocr_options.h"

namespace sorrelin::tool {

enum class OcrResult {
  kWritten,
  kNothing,  // no page has got anything, and the document is as it was
  kFailed
};

struct OcrRun {
  OcrOptions const& options;
  int jobs = 1;
  bool quiet = false;  // no progress bar
  // Takes why a page, counted from 1, has no text. Called in the order of the pages.
  std::function<void(int page, std::string const& problem)> report;
};

// Recognises pages, counted from 0, of a complete document and lays their text on them. The
// document has its directory to itself. After a failure it is as it was, and the reason is in
// `problem`.
OcrResult AddText(std::filesystem::path const& document, std::vector<unsigned> const& pages,
                  OcrRun const& run, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_OCR_OCR_RUN_H_

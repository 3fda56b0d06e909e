// A run of text recognition. Recognition comes first and changes nothing; then libqpdf writes the
// document with text beside the one without, whose name it takes.
#include "tools/ocr/ocr_run.h"

#include <algorithm>
#include <system_error>

#include "tools/cli/messages.h"
#include "tools/cli/progress.h"
#include "tools/ocr/page_texts.h"
#include "tools/ocr/text_layers.h"

namespace sorrelin::tool {
namespace {

constexpr char kWithText[] = "text.pdf";

std::vector<PageText> Recognize(std::filesystem::path const& document,
                                std::vector<unsigned> const& pages, OcrRun const& run) {
  constexpr bool kShowsTime = true;
  Progress progress(!run.quiet, kShowsTime);
  size_t done = 0;
  auto const show = [&](PageText const&) {
    progress.Update(static_cast<double>(++done) / static_cast<double>(pages.size()));
  };
  return RecognizePages({.document = document.string()}, pages, run.options, run.jobs, show);
}

}  // namespace

OcrResult AddText(std::filesystem::path const& document, std::vector<unsigned> const& pages,
                  OcrRun const& run, std::string& problem) {
  auto const texts = Recognize(document, pages, run);
  bool const has_begun =
      std::any_of(texts.begin(), texts.end(), [](PageText const& text) { return text.has_begun; });
  if (!has_begun && !texts.empty()) return problem = texts.front().problem, OcrResult::kFailed;
  for (PageText const& text : texts) {
    if (!text.problem.empty()) run.report(static_cast<int>(text.page) + 1, text.problem);
  }
  bool const found = std::any_of(texts.begin(), texts.end(), [](PageText const& text) {
    return !text.pictures.empty() || text.quarter_turns != 0;
  });
  if (!found) return OcrResult::kNothing;
  std::filesystem::path const with_text = document.parent_path() / kWithText;
  if (!LayTexts(document, with_text, texts, problem)) return OcrResult::kFailed;
  std::error_code error;
  std::filesystem::rename(with_text, document, error);
  if (!error) return OcrResult::kWritten;
  problem = "cannot be written: " + error.message() + kRoomRemedy;
  return OcrResult::kFailed;
}

}  // namespace sorrelin::tool

// sorrelin ocr: invisible text on the pages of a document.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <numeric>
#include <string>
#include <system_error>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/cli/text.h"
#include "tools/documents/file_hold.h"
#include "tools/make/pages/page_options.h"
#include "tools/ocr/ocr_run.h"
#include "tools/ocr/text_layers.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

struct OcrVerbOptions {
  std::string document;
  std::string output;  // empty: the document itself
  OcrOptions ocr;
  int jobs = UsualJobs();
  bool redo = false;
  bool force = false;
  bool quiet = false;
};

// Pages, from 0, that are to be recognised.
std::vector<unsigned> PagesWithoutText(TextSurvey const& survey, bool redo) {
  std::vector<unsigned> all(survey.pages);
  std::iota(all.begin(), all.end(), 0U);
  auto const without = [&all](std::vector<unsigned> const& left_alone) {
    std::vector<unsigned> rest;
    std::set_difference(all.begin(), all.end(), left_alone.begin(), left_alone.end(),
                        std::back_inserter(rest));
    all = std::move(rest);
  };
  without(survey.with_text);
  if (!redo) without(survey.with_layer);
  return all;
}

// One run.
class Ocr {
 public:
  explicit Ocr(OcrVerbOptions const& options) : options_(options) {}

  int Run() {
    std::string problem;
    if (!Change(problem)) Report(options_.document, problem);
    return failed_ ? kExitFailure : kExitSuccess;
  }

 private:
  bool IsInPlace() const {
    std::error_code error;
    return options_.output.empty() ||
           (fs::equivalent(PathOf(options_.document), PathOf(options_.output), error) && !error);
  }

  bool Change(std::string& problem) {
    if (!IsInPlace()) return Write(problem);
    hold_.emplace(PathOf(options_.document));
    return hold_->IsHeld() ? Write(problem) : (problem = FileHold::Problem(), false);
  }

  bool Write(std::string& problem) {
    auto const survey = SurveyText(options_.document, problem);
    if (!survey) return false;
    auto const pages = PagesWithoutText(*survey, options_.redo);
    if (pages.empty() && IsInPlace()) return true;
    auto const output = OpenCopy(problem);
    if (output == nullptr) return output_failed_;
    auto const report = [this](int page, std::string const& reason) {
      Report(options_.document, "page " + std::to_string(page) + ": " + reason);
    };
    OcrRun const run = {options_.ocr, options_.jobs, options_.quiet, report};
    OcrResult const result = AddText(output->path(), pages, run, problem);
    if (result == OcrResult::kFailed) return false;
    bool const is_the_same = result == OcrResult::kNothing && IsInPlace();
    return is_the_same || Commit(*output, problem);
  }

  // The output with a copy of the document in it. Null with the problem in `problem`, or reported
  // where it is the output's.
  std::unique_ptr<OutputFile> OpenCopy(std::string& problem) {
    if (IsInPlace()) return OutputFile::OpenCopy(options_.document, problem);
    auto output = OutputFile::Open(options_.output, options_.force, problem);
    std::error_code error;
    bool const copied =
        output != nullptr && fs::copy_file(PathOf(options_.document), output->path(), error);
    if (copied) return output;
    if (error) problem = "cannot be written: " + error.message() + kRoomRemedy;
    Report(options_.output, problem);
    output_failed_ = true;
    return nullptr;
  }

  bool Commit(OutputFile& output, std::string& problem) {
    if (hold_) hold_->ReleaseForReplacing();
    if (output.Commit(problem)) return true;
    if (IsInPlace()) return problem = "is as it was, because its copy " + problem, false;
    Report(options_.output, problem);
    return true;
  }

  void Report(std::string const& name, std::string const& problem) {
    PrintProblem(name, problem);
    failed_ = true;
  }

  OcrVerbOptions const& options_;
  std::optional<FileHold> hold_;  // of a document that is changed in its place
  bool failed_ = false;
  bool output_failed_ = false;
};

std::string ParseOutput(std::string const& text) {
  if (text.empty()) throw UsageError("--output", "is empty");
  if (!Utf16(text)) throw UsageError("--output", "is not valid UTF-8");
  if (text == kStandardOutput) {
    throw UsageError("--output", "standard output takes no document here: name a file");
  }
  return text;
}

constexpr char kFooter[] =
    R"(Words become invisible text where they are seen, so that viewers find, mark and
copy them. What a page shows does not change. Pages that have text already are
left alone; --redo replaces the program's own text, but no other. LANG is as
Tesseract names it, several joined as in eng+deu; auto takes those of the
locale. With --orientation auto pages whose text lies on its side or upside
down are shown turned, by the page's /Rotate.

The document is changed in a copy beside it, which takes its place when it is
whole, is on the disk and has been read back: whenever the run ends, DOC is the
old document or the new one. A page without words, or one that takes longer
than --timeout seconds, is kept without text and named. Documents that are
encrypted or signed are left alone.

Exit status: 0 all is done; 1 a page or the document failed and was named; 2 the
command line is wrong.

Examples:
  sorrelin ocr scans.pdf
  sorrelin ocr scans.pdf --language deu+fra --output searchable.pdf)";

}  // namespace

void AddOcrVerb(Program& program) {
  Verb verb = program.AddVerb("ocr", "Make the text of a document's pages searchable");
  auto const options = std::make_shared<OcrVerbOptions>();
  verb.Argument("DOC", options->document, "The document");
  verb.Option("-o,--output", "OUT", "Write OUT, and leave DOC as it is",
              [options](std::string const& text) { options->output = ParseOutput(text); });
  AddLanguage(verb, options->ocr.languages);
  AddRecognition(verb, options->ocr);
  AddSegmentation(verb, options->ocr.segmentation);
  verb.Flag("--redo", options->redo, "Replace text that the program laid earlier");
  verb.Flag("--force", options->force, "Replace OUT if it exists");
  AddJobs(verb, options->jobs);
  verb.Flag("--quiet", options->quiet, "Show no progress bar");
  verb.Footer(kFooter);
  verb.Runs([options] { return Ocr(*options).Run(); });
}

}  // namespace sorrelin::tool

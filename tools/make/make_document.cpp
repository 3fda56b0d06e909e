// Makes a document under a temporary name.
#include "tools/make/make_document.h"

#include <memory>
#include <string>

#include "tools/cli/output_file.h"
#include "tools/make/add_texts.h"
#include "tools/make/pages/page_adder.h"

namespace sorrelin::tool {
namespace {

std::unique_ptr<OutputFile> OpenOutput(MakeOptions const& options, std::string& problem) {
  if (options.pages.output == kStandardOutput) return OutputFile::Temporary(problem);
  if (IsOtherFile(options.pages.output)) {
    problem = "exists already, and is no PDF document (name the new document before the pictures)";
    return nullptr;
  }
  return OutputFile::Open(options.pages.output, options.force, problem);
}

// False with the reason in `problem`, unless that has been reported. True without a document if all
// pages are blank and may be.
bool WriteDocument(MakeOptions const& options, PageAdder& adder, std::string& problem) {
  auto const output = OpenOutput(options, problem);
  if (output == nullptr) return false;
  unsigned pages = 0;
  {
    Document document;
    if (!document.Create(output->path(), options.description, problem)) return false;
    if (!adder.AddImages(document)) return false;
    pages = document.PageCount();
    if (pages == 0 && options.may_be_blank && adder.IsAllBlank()) return true;
    if (pages == 0) {
      return problem = "is not written: it would have no pages (name pictures)", false;
    }
    if (!document.Finish(problem)) return false;
  }
  if (!AddTexts(output->path(), 0, pages, options.pages, adder, problem)) return false;
  std::error_code ignored;
  uint64_t const bytes = std::filesystem::file_size(output->path(), ignored);
  if (!output->Commit(problem)) return false;
  adder.NoteWritten(pages, bytes);
  return true;
}

}  // namespace

int MakeDocument(MakeOptions const& options, RunReport* report) {
  PageAdder adder(options.pages);
  std::string problem;
  bool const written = CheckTexts(options.pages, adder) && WriteDocument(options, adder, problem);
  if (!problem.empty()) adder.ReportDocument(problem);
  adder.Finish();
  if (report != nullptr) *report = adder.report();
  return written && !adder.failed() ? kExitSuccess : kExitFailure;
}

}  // namespace sorrelin::tool

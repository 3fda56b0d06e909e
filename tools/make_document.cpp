// The document comes into being under a temporary name.
#include "tools/make_document.h"

#include <string>

#include "tools/output_file.h"
#include "tools/page_adder.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {

int MakeDocument(MakeOptions const& options) {
  PageAdder adder(options.pages);
  auto const give_up = [&](std::string const& problem) {
    adder.ReportDocument(problem);
    return kExitFailure;
  };
  std::string problem;
  auto const output = OutputFile::Open(options.pages.output, options.force, problem);
  if (output == nullptr) return give_up(problem);
  {
    Document document;
    if (!document.Create(output->path(), options.description, problem)) return give_up(problem);
    if (!adder.AddImages(document)) return kExitFailure;
    if (document.PageCount() == 0) return give_up("is not written: it would have no pages");
    if (!document.Finish(problem)) return give_up(problem);
  }
  if (!output->Commit(problem)) return give_up(problem);
  return adder.failed() ? kExitFailure : kExitSuccess;
}

}  // namespace sorrelin::tool

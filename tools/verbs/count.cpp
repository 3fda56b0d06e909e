// sorrelin count: how many pages documents have.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/documents/child_function.h"
#include "tools/documents/open_document.h"
#include "tools/documents/password_file.h"
#include "tools/documents/qpdf_document.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

struct CountOptions {
  std::vector<std::string> names;
  std::string password;
};

// Both are called in a child that ends with its answer, and leave the closing of the document,
// which takes time, to its end.
std::optional<std::string> CountPages(std::string const& name, std::string& problem) {
  auto const* const document = OpenDocument::Open(name, problem).release();
  if (document == nullptr) return std::nullopt;
  return std::to_string(document->PageCount());
}

std::optional<std::string> CountRepaired(std::string const& name, std::string const& password,
                                         std::string& problem) {
  auto const* const document = QpdfDocument::Open(name, password, problem).release();
  if (document == nullptr) return std::nullopt;
  return std::to_string(document->ListedPages());
}

ChildFunction<std::string> const kCountPages("count pages", CountPages);
ChildFunction<std::string, std::string> const kCountRepaired("count repaired pages", CountRepaired);

// The library's answer, or libqpdf's where the library does not open the document, or is ended.
std::optional<std::string> CountHere(std::string const& name, std::string const& password,
                                     std::string& problem) {
  if (auto pages = AskChild(kCountPages.With(name), problem)) return pages;
  return AskChild(kCountRepaired.With(name, password), problem);
}

int Count(CountOptions const& options) {
  int exit_code = kExitSuccess;
  for (std::string const& name : options.names) {
    std::string problem;
    auto const count = CountHere(name, options.password, problem);
    if (!count) {
      PrintProblem(name, problem);
      exit_code = kExitFailure;
    } else if (options.names.size() == 1) {
      std::printf("%s\n", count->c_str());
    } else {
      std::printf("%s: %s\n", name.c_str(), count->c_str());
    }
    FlushOutput();
  }
  return exit_code;
}

constexpr char kFooter[] =
    R"(Of one file the number alone is printed, of several a line "FILE: NUMBER" each.
Encrypted documents are read with the empty password, or with the one in the
first line of --password-file.

Exit status: 0 all is done; 1 a file could not be read and was named; 2 the
command line is wrong.

Examples:
  sorrelin count scans.pdf
  sorrelin count *.pdf)";

}  // namespace

void AddCount(Program& program) {
  Verb verb = program.AddVerb("count", "Print how many pages documents have");
  auto const options = std::make_shared<CountOptions>();
  verb.Argument("FILE", options->names, "The documents");
  AddPasswordFile(verb, options->password);
  verb.Footer(kFooter);
  verb.Runs([options] { return Count(*options); });
}

}  // namespace sorrelin::tool

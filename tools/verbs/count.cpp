// sorrelin count: how many pages documents have.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/documents/child.h"
#include "tools/documents/open_document.h"
#include "tools/documents/qpdf_document.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

// Both are called in a child that ends with its answer, and leave the closing of the document,
// which takes time, to its end.
std::optional<std::string> CountPages(std::string const& name, std::string& problem) {
  auto const* const document = OpenDocument::Open(name, problem).release();
  if (document == nullptr) return std::nullopt;
  return std::to_string(document->PageCount());
}

std::optional<std::string> CountRepaired(std::string const& name, std::string& problem) {
  auto const* const document = QpdfDocument::Open(name, "", problem).release();
  if (document == nullptr) return std::nullopt;
  return std::to_string(document->ListedPages());
}

// The library's answer, or libqpdf's where the library does not open the document, or is ended.
std::optional<std::string> CountHere(std::string const& name, std::string& problem) {
  using Counter = std::optional<std::string> (*)(std::string const&, std::string&);
  for (Counter const counter : {CountPages, CountRepaired}) {
    auto count = AskChild([&](std::string& reason) { return counter(name, reason); }, problem);
    if (count) return count;
  }
  return std::nullopt;
}

int Count(std::vector<std::string> const& names) {
  int exit_code = kExitSuccess;
  for (std::string const& name : names) {
    std::string problem;
    auto const count = CountHere(name, problem);
    if (!count) {
      PrintProblem(name, problem);
      exit_code = kExitFailure;
    } else if (names.size() == 1) {
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

Exit status: 0 all is done; 1 a file could not be read and was named; 2 the
command line is wrong.

Examples:
  sorrelin count scans.pdf
  sorrelin count *.pdf)";

}  // namespace

void AddCount(Program& program) {
  Verb verb = program.AddVerb("count", "Print how many pages documents have");
  auto const names = std::make_shared<std::vector<std::string>>();
  verb.Argument("FILE", *names, "The documents");
  verb.Footer(kFooter);
  verb.Runs([names] { return Count(*names); });
}

}  // namespace sorrelin::tool

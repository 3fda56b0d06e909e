// sorrelin scan: pages from a scanner, one by one into a document.
#include <memory>
#include <string>

#include "tools/cli/text.h"
#include "tools/make/pages/page_options.h"
#include "tools/scan/scan_run.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

constexpr char kName[] = "DOC";
constexpr int kMostDotsPerInch = 100000;

struct Options {
  ScanOptions scan;
  bool list = false;
};

std::pair<std::string, std::string> ParseSetting(std::string const& text) {
  size_t const equals = text.find('=');
  if (equals != std::string::npos && equals > 0) {
    return {text.substr(0, equals), text.substr(equals + 1)};
  }
  throw UsageError("--option", "takes NAME=VALUE as in brightness=10, not " + text);
}

void AddScanner(Verb& verb, ScanOptions& options) {
  auto const add = [&](char const* name, char const* type, char const* help, std::string& target) {
    verb.Option(name, type, help, [&target](std::string const& text) { target = text; });
  };
  add("--device", "NAME", "The scanner (the first one)", options.device);
  add("--source", "KIND", "flatbed, adf, duplex, or as the scanner calls it", options.source);
  add("--mode", "KIND", "bilevel, grey, colour, or as the scanner calls it", options.mode);
  verb.Number("--resolution", options.resolution, 1, kMostDotsPerInch, "Dots per inch");
  verb.RepeatedOption(
      "--option", "NAME=VALUE", "Anything else that the scanner takes",
      [&options](std::string const& text) { options.settings.push_back(ParseSetting(text)); });
  verb.Flag("--prompt", options.prompt, "Ask before each page");
}

constexpr char kFooter[] =
    R"(
A page is added to DOC, which is made if it does not exist, before the next one
is asked for: whenever the run ends, DOC is a complete document with every page
before. A feeder is emptied; of a flatbed one page is scanned, or with --prompt
as many as are put in. --page also is the area that is scanned, from the upper
left corner on. --skip-blank leaves blank pages out. --list says which scanners
are there, and what --option may set.

Exit status: 0 all is done; 1 the scanner failed, and the pages before are in
DOC; 2 the command line is wrong.

Examples:
  sorrelin scan --list
  sorrelin scan letter.pdf --source adf --mode bilevel --resolution 300 --page a4)";

}  // namespace

void AddScan(Program& program) {
  Verb verb = program.AddVerb("scan", "Add pages from a scanner to a document");
  auto const options = std::make_shared<Options>();
  PageOptions& pages = options->scan.document.pages;
  verb.OptionalArgument(kName, pages.output, "The document; it is made if it does not exist");
  verb.Flag("--list", options->list, "Print the scanners that are there and what they take");
  AddScanner(verb, options->scan);
  AddPageStyle(verb, pages);
  AddOcr(verb, pages.ocr);
  AddRecognition(verb, pages.ocr);
  verb.Flag("--quiet", pages.quiet, "Print problems only");
  verb.Footer(kFooter);
  verb.Runs([options] {
    PageOptions& document = options->scan.document.pages;
    if (options->list) return ListScanners();
    if (document.output.empty()) throw UsageError(kName, "is missing: name the document");
    if (document.output == kStandardOutput) throw UsageError(kName, "must be a file");
    ListFiles(document, kName);
    return ScanPages(options->scan);
  });
}

}  // namespace sorrelin::tool

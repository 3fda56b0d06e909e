// sorrelin scan: pages from a scanner, one by one into documents.
#include <charconv>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "tools/cli/text.h"
#include "tools/make/make_options.h"
#include "tools/make/pages/page_options.h"
#include "tools/scan/document_names.h"
#include "tools/scan/scan_run.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

constexpr char kName[] = "DOC";
constexpr int kMostDotsPerInch = 100000;
constexpr int kMostPagesEach = 100000;
constexpr int kLongestWait = 86400;

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

void ParseSeparation(std::string const& text, ScanOptions& options) {
  options.blank_separates = text == "blank";
  int& pages = options.pages_each;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), pages);
  bool const is_number = error == std::errc{} && end == text.data() + text.size();
  if (options.blank_separates || (is_number && pages >= 1 && pages <= kMostPagesEach)) return;
  throw UsageError("--separate", "takes blank, or a number of pages, not " + text);
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
  verb.Option("--separate", "blank|N",
              "Begin a document after a blank page, or after every N pages",
              [&options](std::string const& text) { ParseSeparation(text, options); });
  verb.Number("--wait", options.wait, 0, kLongestWait,
              "Seconds without data until the scanner is given up, 0: no end (300)");
}

void CheckDocument(ScanOptions const& options) {
  std::string const& output = options.document.pages.output;
  if (output.empty()) throw UsageError(kName, "is missing: name the document");
  if (output == kStandardOutput) throw UsageError(kName, "must be a file");
  if (DocumentNames(output).IsPattern()) return;
  if (options.blank_separates || options.pages_each > 0) {
    throw UsageError("--separate", "needs a name with a number, such as letter-%d.pdf");
  }
  Description const& description = options.document.description;
  bool const is_described = !description.title.empty() || !description.author.empty() ||
                            !description.subject.empty() || !description.keywords.empty();
  std::error_code ignored;
  if (is_described && std::filesystem::exists(PathOf(output), ignored)) {
    throw UsageError(kName, "exists, and keeps its title, author, subject and keywords");
  }
}

constexpr char kFooter[] =
    R"(
A page is added to DOC, which is made if it does not exist, before the next one
is asked for: whenever the run ends, DOC is a complete document with every page
before. A feeder is emptied; of a flatbed one page is scanned, or with --prompt
as many as are put in. --page also is the area that is scanned, from the upper
left corner on. --list says which scanners are there, and what --option may set.

A DOC with a number in its name, such as letter-%d.pdf or letter-%03d.pdf, is a
new document with the first number that no file has. --separate begins another
one after each blank page, which is left out, or after a number of pages;
--skip-blank leaves blank pages out and begins none. A title and what else
describes a document belongs to new ones alone, and so does the date that
SOURCE_DATE_EPOCH sets.

Bilevel pages become Group 4 data, and with --compression jpeg others JPEG data,
while they are scanned. The report of --json comes after each page, and is that
of append.

Exit status: 0 all is done; 1 the scanner failed, and the pages before are in
DOC; 2 the command line is wrong.

Examples:
  sorrelin scan --list
  sorrelin scan letter.pdf --source adf --mode bilevel --resolution 300 --page a4
  sorrelin scan post-%03d.pdf --source adf --separate blank)";

}  // namespace

void AddScan(Program& program) {
  Verb verb = program.AddVerb("scan", "Add pages from a scanner to a document");
  auto const options = std::make_shared<Options>();
  PageOptions& pages = options->scan.document.pages;
  verb.OptionalArgument(kName, pages.output, "The document; it is made if it does not exist");
  verb.Flag("--list", options->list, "Print the scanners that are there and what they take");
  AddScanner(verb, options->scan);
  AddDescription(verb, options->scan.document.description);
  AddPageStyle(verb, pages);
  AddOcr(verb, pages.ocr);
  AddRecognition(verb, pages.ocr);
  AddReports(verb, pages);
  verb.Footer(kFooter);
  verb.Runs([options] {
    if (options->list) return ListScanners();
    UpdateOptions& document = options->scan.document;
    CheckDocument(options->scan);
    ListFiles(document.pages, kName);
    document.description.created = CreationTime();
    return ScanPages(options->scan);
  });
}

}  // namespace sorrelin::tool

// Options of `make`, and the checks of what was given.
#include "tools/make/make_options.h"

#include <sorrelin/platform/console.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "tools/cli/text.h"
#include "tools/make/source_date.h"

namespace sorrelin::tool {
namespace {

constexpr char kName[] = "OUT";

WideText ParseText(std::string const& option, std::string const& text, size_t most) {
  auto const units = Utf16(text);
  if (!units) throw UsageError(option, "is not valid UTF-8");
  if (units->size() > most) {
    throw UsageError(option, "has " + std::to_string(units->size()) +
                                 " characters, and a document holds " + std::to_string(most) +
                                 " of it");
  }
  return *units;
}

void AddText(Verb& verb, std::string const& option, WideText& target, size_t most,
             std::string const& help) {
  verb.Option(option, "TEXT", help, [&target, option, most](std::string const& text) {
    target = ParseText(option, text, most);
  });
}

// What standard output may be used for.
void CheckStandardOutput(PageOptions const& options) {
  if (options.output != kStandardOutput) return;
  if (options.json) {
    throw UsageError("--json", "standard output takes the document: name a file for it");
  }
  if (StandardOutputIsTerminal() == FALSE) return;
  throw UsageError(kName,
                   "standard output is a terminal: name a file, or send the document into "
                   "a file or pipe");
}

}  // namespace

void AddDescription(Verb& verb, Description& description) {
  AddText(verb, "--title", description.title, kMaxTextUnits, "Title of the document");
  AddText(verb, "--author", description.author, kMaxTextUnits, "Its author");
  AddText(verb, "--subject", description.subject, kMaxTextUnits, "Its subject");
  AddText(verb, "--keywords", description.keywords, kMaxKeywordsUnits, "Its keywords");
}

std::optional<SYSTEMTIME> CreationTime() {
  char const* const seconds = std::getenv("SOURCE_DATE_EPOCH");
  if (seconds == nullptr || *seconds == '\0') return std::nullopt;
  auto const time = TimeOfEpoch(seconds);
  if (time) return time;
  throw UsageError("SOURCE_DATE_EPOCH",
                   "must be a number of seconds from 0 to " + std::to_string(kLastSecond));
}

void AddMakeOptions(Verb& verb, MakeOptions& options) {
  AddFiles(verb, options.pages, kName, "The document to make");
  AddDescription(verb, options.description);
  AddPageStyle(verb, options.pages);
  AddOcr(verb, options.pages.ocr);
  AddRecognition(verb, options.pages.ocr);
  verb.Flag("--force", options.force, "Replace OUT if it exists");
  AddRun(verb, options.pages);
}

void PrepareMake(MakeOptions& options) {
  CheckStandardOutput(options.pages);
  ListFiles(options.pages, kName);
  options.description.created = CreationTime();
}

}  // namespace sorrelin::tool

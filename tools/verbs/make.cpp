// sorrelin make: a new document with the pictures of the files as its pages.
#include <memory>
#include <string>

#include "tools/make_document.h"
#include "tools/page_options.h"
#include "tools/text.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

std::u16string ParseText(std::string const& option, std::string const& text, size_t most) {
  auto const units = Utf16(text);
  if (!units) throw CLI::ValidationError(option, "is not valid UTF-8");
  if (units->size() > most) {
    throw CLI::ValidationError(option, "has " + std::to_string(units->size()) +
                                           " characters, and a document holds " +
                                           std::to_string(most) + " of it");
  }
  return *units;
}

void AddText(CLI::App& verb, std::string const& option, std::u16string& target, size_t most,
             std::string const& help) {
  verb.add_option_function<std::string>(
          option,
          [&target, option, most](std::string const& text) {
            target = ParseText(option, text, most);
          },
          help)
      ->type_name("TEXT");
}

constexpr char kFooter[] =
    R"(
Exit status: 0 all is done; 1 a file failed and was named, or nothing could be
written; 2 the command line is wrong. Only a complete document gets its name.

Examples:
  sorrelin make scans.pdf page1.tif page2.tif --title "Land register 1911"
  sorrelin make photos.pdf *.jpg --dpi 300
  scanimage --format=png | sorrelin make letter.pdf - --compression g4)";

}  // namespace

void AddMake(CLI::App& program, int& exit_code) {
  CLI::App& verb = *program.add_subcommand("make", "Make a new document with a page per picture");
  auto const options = std::make_shared<MakeOptions>();
  AddFiles(verb, options->pages, "OUT", "The document to make");
  Description& description = options->description;
  AddText(verb, "--title", description.title, kMaxTextUnits, "Title of the document");
  AddText(verb, "--author", description.author, kMaxTextUnits, "Its author");
  AddText(verb, "--subject", description.subject, kMaxTextUnits, "Its subject");
  AddText(verb, "--keywords", description.keywords, kMaxKeywordsUnits, "Its keywords");
  AddPageStyle(verb, options->pages);
  verb.add_flag("--force", options->force, "Replace OUT if it exists");
  AddQuiet(verb, options->pages);
  verb.footer(std::string(kPicturesHelp) + kFooter);
  verb.callback([options, &exit_code] {
    CheckFiles(options->pages, "OUT");
    exit_code = MakeDocument(*options);
  });
}

}  // namespace sorrelin::tool

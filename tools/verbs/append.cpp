// sorrelin append: the pictures of the files as further pages of a document.
#include <memory>
#include <string>

#include "tools/make/pages/page_options.h"
#include "tools/make/update_document.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

constexpr char kName[] = "DOC";

constexpr char kFooter[] =
    R"(
A document that does not exist is made. Otherwise the pages are added to a copy
beside DOC, which takes the place of DOC when it is whole, is on the disk and
has been read back: whenever the run ends, DOC is the old document or the new
one. Owner and permissions stay; a link stays a link, and what it names is
changed. --in-place writes to DOC itself: it needs no room for a copy and keeps
hard links, but a run that is killed leaves a document that has to be repaired.

Pages, description, bookmarks, forms and attachments of DOC stay. A DOC whose
form takes no pages, such as one with object streams, is rewritten first in the
copy, and the run says so; --no-rewrite and --in-place leave it alone. Encrypted
and signed documents are left alone.

Exit status: 0 all is done; 1 a file failed and was named, or DOC could not be
changed and is as it was; 2 the command line is wrong.

Examples:
  sorrelin append scans.pdf page3.tif
  while scanimage --format=png >page.png; do sorrelin append scans.pdf page.png
  done)";

}  // namespace

void AddAppend(Program& program) {
  Verb verb = program.AddVerb("append", "Add a page per picture to a document");
  auto const options = std::make_shared<UpdateOptions>();
  AddFiles(verb, options->pages, kName, "The document; it is made if it does not exist");
  AddPageStyle(verb, options->pages);
  AddOcr(verb, options->pages.ocr);
  AddRecognition(verb, options->pages.ocr);
  verb.Flag("--in-place", options->in_place, "Write to DOC itself and not to a copy");
  verb.Flag("--no-rewrite", options->no_rewrite, "Refuse a DOC whose form takes no pages");
  AddRun(verb, options->pages);
  verb.Footer(std::string(kPicturesHelp) + kOcrHelp + kFooter);
  verb.Runs([options] {
    if (options->pages.output == kStandardOutput) {
      throw UsageError(kName, "a document on standard output has no pages yet: use make");
    }
    if (options->in_place && options->pages.ocr.IsWanted()) {
      throw UsageError("--in-place", "text is laid in a copy: leave it or --ocr out");
    }
    ListFiles(options->pages, kName);
    return AppendPages(*options);
  });
}

}  // namespace sorrelin::tool

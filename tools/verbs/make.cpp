// sorrelin make: a new document with the pictures of the files as its pages.
#include <memory>
#include <string>

#include "tools/make/make_document.h"
#include "tools/make/make_options.h"
#include "tools/make/pages/page_options.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

constexpr char kFooter[] =
    R"(
As OUT, - is standard output, which takes the document when it is complete.
Where SOURCE_DATE_EPOCH is set, it is the document's date, and the same pictures
give the same bytes.

Exit status: 0 all is done; 1 a file failed and was named, or nothing could be
written; 2 the command line is wrong. Only a complete document gets its name.

Examples:
  sorrelin make scans.pdf page1.tif page2.tif --title "Land register 1911"
  sorrelin make photos.pdf *.jpg --dpi 300
  sorrelin make book.pdf scans/ --sort natural
  scanimage --format=png | sorrelin make letter.pdf - --compression g4)";

}  // namespace

void AddMake(Program& program) {
  Verb verb = program.AddVerb("make", "Make a new document with a page per picture");
  auto const options = std::make_shared<MakeOptions>();
  AddMakeOptions(verb, *options);
  verb.Footer(std::string(kPicturesHelp) + kOcrHelp + kFooter);
  verb.Runs([options] {
    PrepareMake(*options);
    return MakeDocument(*options);
  });
}

}  // namespace sorrelin::tool

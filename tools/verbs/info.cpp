// sorrelin info: what a document is and what its pages hold.
#include <cstdio>
#include <memory>
#include <string>
#include <tuple>

#include "tools/cli/json.h"
#include "tools/cli/messages.h"
#include "tools/documents/child_function.h"
#include "tools/documents/password_file.h"
#include "tools/documents/qpdf_document.h"
#include "tools/extract/page/page_judge.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

struct InfoOptions {
  std::string name;
  std::string password;
  bool json = false;

  template <typename Self>
  static auto Fields(Self& self) {
    return std::tie(self.name, self.password, self.json);
  }
};

std::string Pair(std::string const& a, std::string const& b) { return a + "x" + b; }

// What is said of the picture of a page; of a page that does not consist of one, nothing is known.
PagePicture const& PictureOf(PageFacts const& facts) {
  static PagePicture const kNone;
  return facts.whole.empty() ? kNone : facts.whole[0];
}

std::string PixelsOf(PagePicture const& picture) {
  if (picture.Width() == 0 || picture.Height() == 0) return "-";
  return Pair(std::to_string(picture.Width()), std::to_string(picture.Height()));
}

std::string DotsOf(PagePicture const& picture) {
  if (picture.dpi.x == 0 || picture.dpi.y == 0) return "-";
  return Pair(std::to_string(picture.dpi.x), std::to_string(picture.dpi.y));
}

std::string PageLine(DWORD page, PageFacts const& facts) {
  PagePicture const& picture = PictureOf(facts);
  char line[256];
  std::snprintf(
      line, sizeof line, "%6s  %13s  %13s  %5s  %-11s  %s", std::to_string(page + 1).c_str(),
      Pair(JsonNumber(facts.width), JsonNumber(facts.height)).c_str(), PixelsOf(picture).c_str(),
      picture.Depth() == 0 ? "-" : std::to_string(picture.Depth()).c_str(),
      picture.compression.empty() ? "-" : picture.compression.substr(0, 100).c_str(),
      DotsOf(picture).c_str());
  std::string text = std::string(line) + "\n";
  if (facts.rotation != 0) {
    text += "        shown turned by " + std::to_string(facts.rotation) + " degrees\n";
  }
  if (!facts.problem.empty()) text += "        ! " + facts.problem + "\n";
  return text;
}

std::string OneLine(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return text;
}

std::string InfoText(QpdfDocument& document) {
  std::string text = "Pages:       " + std::to_string(document.PageCount()) + "\n";
  if (document.IsEncrypted()) text += "Encrypted:   yes\n";
  for (char const* const key : {"Title", "Author", "Subject", "Keywords"}) {
    std::string const value = document.Text(key);
    std::string label = std::string(key) + ":";
    label.resize(13, ' ');
    if (!value.empty()) text += label + OneLine(value) + "\n";
  }
  DWORD const listed = document.ListedPages();
  if (listed != 0) text += "\n  page         points         pixels  depth  compression  dpi\n";
  for (DWORD page = 0; page < listed; ++page) text += PageLine(page, JudgePage(document, page));
  if (listed < document.PageCount()) {
    text += "        ! further pages are not in the document\n";
  }
  return text;
}

std::string OrNull(bool known, std::string const& value) { return known ? value : "null"; }

std::string NumberOrNull(long long number) { return OrNull(number != 0, std::to_string(number)); }

std::string PageJson(DWORD page, PageFacts const& facts) {
  PagePicture const& picture = PictureOf(facts);
  JsonObject json(4);
  json.Add("number", std::to_string(page + 1));
  json.Add("width_points", JsonNumber(facts.width));
  json.Add("height_points", JsonNumber(facts.height));
  json.Add("rotate", std::to_string(facts.rotation));
  json.Add("width_pixels", NumberOrNull(picture.Width()));
  json.Add("height_pixels", NumberOrNull(picture.Height()));
  json.Add("depth", NumberOrNull(picture.Depth()));
  json.Add("compression", OrNull(!picture.compression.empty(), JsonString(picture.compression)));
  json.Add("dpi_x", NumberOrNull(picture.dpi.x));
  json.Add("dpi_y", NumberOrNull(picture.dpi.y));
  json.Add("problem", OrNull(!facts.problem.empty(), JsonString(facts.problem)));
  return json.Finish();
}

std::string PagesJson(QpdfDocument& document) {
  std::string pages;
  for (DWORD page = 0; page < document.ListedPages(); ++page) {
    pages += (page == 0 ? "\n    " : ",\n    ") + PageJson(page, JudgePage(document, page));
  }
  return pages.empty() ? "[]" : "[" + pages + "\n  ]";
}

std::string InfoJson(std::string const& name, QpdfDocument& document) {
  JsonObject json(0);
  json.Add("file", JsonString(name));
  json.Add("pages", std::to_string(document.PageCount()));
  json.Add("encrypted", document.IsEncrypted() ? "true" : "false");
  json.Add("title", JsonString(document.Text("Title")));
  json.Add("author", JsonString(document.Text("Author")));
  json.Add("subject", JsonString(document.Text("Subject")));
  json.Add("keywords", JsonString(document.Text("Keywords")));
  json.Add("page", PagesJson(document));
  return json.Finish() + "\n";
}

std::optional<std::string> Describe(InfoOptions const& options, std::string& problem) {
  auto const document = QpdfDocument::Open(options.name, options.password, problem);
  if (document == nullptr) return std::nullopt;
  std::string text;
  bool const described = CatchDamage(
      [&] { text = options.json ? InfoJson(options.name, *document) : InfoText(*document); },
      problem);
  if (!described) return std::nullopt;
  return text;
}

ChildFunction<InfoOptions> const kDescribe("describe", Describe);

int Info(InfoOptions const& options) {
  std::string problem;
  if (auto const text = AskChild(kDescribe.With(options), problem)) {
    std::fputs(text->c_str(), stdout);
    return kExitSuccess;
  }
  PrintProblem(options.name, problem);
  return kExitFailure;
}

constexpr char kFooter[] =
    R"(Of each page: its size in points, and of its picture the size in pixels, the
bits per pixel, how it is compressed, and its dots per inch as it stands on the
page. A line with ! says why a page is not extracted as one picture. Sizes are
those before a page is turned for display. An encrypted document is read with
the empty password, or with the one in the first line of --password-file.

With --json, "page" is an array of objects. Keys always stand in the same order,
what is not known is null, and a text that the document does not have is empty.

Exit status: 0 all is done; 1 the file could not be read; 2 the command line is
wrong.

Example:
  sorrelin info scans.pdf)";

}  // namespace

void AddInfo(Program& program) {
  Verb verb = program.AddVerb("info", "Print what a document and its pages are");
  auto const options = std::make_shared<InfoOptions>();
  verb.Argument("FILE", options->name, "The document");
  verb.Flag("--json", options->json, "Print it as JSON");
  AddPasswordFile(verb, options->password);
  verb.Footer(kFooter);
  verb.Runs([options] { return Info(*options); });
}

}  // namespace sorrelin::tool

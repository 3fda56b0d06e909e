// sorrelin info: what a document is and what its pages hold.
#include <cstdio>
#include <memory>
#include <string>

#include "tools/cli/json.h"
#include "tools/cli/messages.h"
#include "tools/documents/child.h"
#include "tools/documents/open_document.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

struct InfoOptions {
  std::string name;
  bool json = false;
};

std::string Pair(std::string const& a, std::string const& b) { return a + "x" + b; }

std::string PixelsOf(PageFacts const& facts) {
  if (facts.pixel_width == 0 || facts.pixel_height == 0) return "-";
  return Pair(std::to_string(facts.pixel_width), std::to_string(facts.pixel_height));
}

std::string DotsOf(PageFacts const& facts) {
  if (facts.dpi.x == 0 || facts.dpi.y == 0) return "-";
  return Pair(std::to_string(facts.dpi.x), std::to_string(facts.dpi.y));
}

std::string PageLine(DWORD page, PageFacts const& facts) {
  char line[256];
  std::snprintf(line, sizeof line, "%6u  %13s  %13s  %5s  %-11s  %s", page + 1,
                Pair(JsonNumber(facts.width), JsonNumber(facts.height)).c_str(),
                PixelsOf(facts).c_str(),
                facts.depth == 0 ? "-" : std::to_string(facts.depth).c_str(),
                facts.compression.empty() ? "-" : facts.compression.substr(0, 100).c_str(),
                DotsOf(facts).c_str());
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

std::string InfoText(OpenDocument const& document) {
  std::string text = "Pages:       " + std::to_string(document.PageCount()) + "\n";
  if (document.IsEncrypted()) return text + "Encrypted:   yes\n";
  auto const add = [&](char const* label, std::string const& value) {
    if (!value.empty()) text += label + OneLine(value) + "\n";
  };
  add("Title:       ", document.Title());
  add("Author:      ", document.Author());
  add("Subject:     ", document.Subject());
  add("Keywords:    ", document.Keywords());
  DWORD const listed = document.ListedPages();
  if (listed != 0) text += "\n  page         points         pixels  depth  compression  dpi\n";
  for (DWORD page = 0; page < listed; ++page) text += PageLine(page, document.Judge(page));
  if (listed < document.PageCount()) {
    text += "        ! further pages are not in the document\n";
  }
  return text;
}

std::string OrNull(bool known, std::string const& value) { return known ? value : "null"; }

std::string PageJson(DWORD page, PageFacts const& facts) {
  JsonObject json(4);
  json.Add("number", std::to_string(page + 1));
  json.Add("width_points", JsonNumber(facts.width));
  json.Add("height_points", JsonNumber(facts.height));
  json.Add("rotate", std::to_string(facts.rotation));
  json.Add("width_pixels", OrNull(facts.pixel_width != 0, std::to_string(facts.pixel_width)));
  json.Add("height_pixels", OrNull(facts.pixel_height != 0, std::to_string(facts.pixel_height)));
  json.Add("depth", OrNull(facts.depth != 0, std::to_string(facts.depth)));
  json.Add("compression", OrNull(!facts.compression.empty(), JsonString(facts.compression)));
  json.Add("dpi_x", OrNull(facts.dpi.x != 0, std::to_string(facts.dpi.x)));
  json.Add("dpi_y", OrNull(facts.dpi.y != 0, std::to_string(facts.dpi.y)));
  json.Add("problem", OrNull(!facts.problem.empty(), JsonString(facts.problem)));
  return json.Finish();
}

std::string PagesJson(OpenDocument const& document) {
  if (document.IsEncrypted()) return "[]";
  std::string pages;
  for (DWORD page = 0; page < document.ListedPages(); ++page) {
    pages += (page == 0 ? "\n    " : ",\n    ") + PageJson(page, document.Judge(page));
  }
  return pages.empty() ? "[]" : "[" + pages + "\n  ]";
}

std::string InfoJson(std::string const& name, OpenDocument const& document) {
  JsonObject json(0);
  json.Add("file", JsonString(name));
  json.Add("pages", std::to_string(document.PageCount()));
  json.Add("encrypted", document.IsEncrypted() ? "true" : "false");
  json.Add("title", JsonString(document.Title()));
  json.Add("author", JsonString(document.Author()));
  json.Add("subject", JsonString(document.Subject()));
  json.Add("keywords", JsonString(document.Keywords()));
  json.Add("page", PagesJson(document));
  return json.Finish() + "\n";
}

std::optional<std::string> Describe(InfoOptions const& options, std::string& problem) {
  auto const document = OpenDocument::Open(options.name, problem);
  if (document == nullptr) return std::nullopt;
  return options.json ? InfoJson(options.name, *document) : InfoText(*document);
}

int Info(InfoOptions const& options) {
  std::string problem;
  auto const text =
      AskChild([&](std::string& reason) { return Describe(options, reason); }, problem);
  if (text) {
    std::fputs(text->c_str(), stdout);
    return kExitSuccess;
  }
  PrintProblem(options.name, problem);
  return kExitFailure;
}

constexpr char kFooter[] =
    R"(Of each page: its size in points, and of its picture the size in pixels, the
bits per pixel, how it is compressed, and its dots per inch as it stands on the
page. A line with ! tells why a picture cannot be extracted. Sizes are those
before a page is turned for display, as pictures are extracted. Nothing is told
of the texts and pages of an encrypted document.

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
  verb.Footer(kFooter);
  verb.Runs([options] { return Info(*options); });
}

}  // namespace sorrelin::tool

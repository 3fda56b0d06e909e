// sorrelin extract: the pictures of a document's pages as files.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/cli/jobs.h"
#include "tools/cli/text.h"
#include "tools/documents/page_selection.h"
#include "tools/documents/password_file.h"
#include "tools/extract/extract_run.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

struct Options {
  ExtractOptions run;
  std::string output;
  std::optional<FileFormat> format;
};

// A name that promises another kind of file gets no PNG.
FileFormat FormatOf(Options const& options) {
  if (options.format) return *options.format;
  if (options.output.empty()) return FileFormat::kKeep;
  if (auto const format = FormatOfFile(PathOf(options.output))) return *format;
  std::string const extension = PathOf(options.output).extension().string();
  if (extension.empty() || extension.find('%') != extension.npos) return FileFormat::kPng;
  throw UsageError("--output", extension + " is no format that is written: --format chooses one");
}

// Files that are kept as they are get the extensions of what they turn out to be.
std::string WithoutExtension(std::string const& pattern) {
  if (!FormatOfFile(PathOf(pattern))) return pattern;
  return pattern.substr(0, pattern.rfind('.'));
}

// Without a pattern, files get the document's name, in the current directory.
std::string PatternFor(Options const& options, FileFormat format) {
  bool const keeps = format == FileFormat::kKeep;
  if (!options.output.empty()) {
    return keeps ? WithoutExtension(options.output) : options.output;
  }
  std::string const stem = PatternOf(PathOf(options.run.files.document).stem().string());
  std::string const number = options.run.files.all         ? "-%d-%i"
                             : format == FileFormat::kTiff ? ""
                                                           : "-%d";
  return stem + number + (keeps ? "" : ExtensionOf(format));
}

int RunExtract(Options options) {
  FileFormat const format = FormatOf(options);
  auto const pattern = NamePattern::Parse(PatternFor(options, format));
  if (!pattern) {
    throw UsageError("--output",
                     "takes %d once, for the page's number, %i once, for the picture's, and %% for "
                     "a percent sign");
  }
  bool const shared = format == FileFormat::kTiff && !pattern->HasPage() && !pattern->HasPicture();
  if (options.run.files.all && !pattern->HasPicture() && !shared) {
    throw UsageError("--output", "needs %i for the picture's number with --all");
  }
  options.run.files.format = format;
  options.run.pattern = *pattern;
  return ExtractPictures(options.run);
}

PageSelection ParsePages(std::string const& text) {
  auto const pages = PageSelection::Parse(text);
  if (!pages) throw UsageError("--pages", "takes pages as in 1-3,7 or 5-, not " + text);
  return *pages;
}

FileFormat ParseFormat(std::string const& text) {
  auto const format = FormatOfName(text);
  if (format) return *format;
  throw UsageError("--format", "takes keep, png, tiff, bmp, pnm or jpeg, not " + text);
}

std::string ParsePattern(std::string const& text) {
  if (text.empty()) throw UsageError("--output", "is empty");
  if (!Utf16(text)) throw UsageError("--output", "is not valid UTF-8");
  if (text == "-") throw UsageError("--output", "standard output takes no pictures: name a file");
  return text;
}

constexpr char kFooter[] =
    R"(In a PATTERN, %d stands for the page's number, and %03d for three digits of it;
%i stands for the number of a picture on its page; %% is a percent sign. The
usual pattern is the document's name with -%d, or -%d-%i with --all, in the
current directory. A TIFF file whose name has no number takes all pages. The
pattern's extension chooses the format, too.

Without a format or a pattern, pictures are kept as the document stores them:
JPEG as .jpg, JPEG 2000 as .jp2, Group 4 and Group 3 as .tif, JBIG2 as .jb2, and
everything else as .png. In other formats black and white stays black and white,
a palette stays a palette, and the resolution is kept, as far as the format has
them; what is transparent is laid on white where it has no transparency.

A page is read if it consists of one picture, which may be cut into strips. The
picture is turned as viewers show it, JPEG without loss. What would come out
wrong is named and not written: damaged data, and what cannot be decoded. An
encrypted document is read with the empty password, or with the one in the first
line of --password-file.

Exit status: 0 all is done; 1 a page or the document failed and was named, the
others are written; 2 the command line is wrong. Only a complete file gets its
name, and none is replaced without --force.

Examples:
  sorrelin extract scans.pdf
  sorrelin extract scans.pdf --all --output page%03d-%i --format keep
  sorrelin extract scans.pdf --pages 1-3,7 --output page%03d.tif
  sorrelin extract scans.pdf --format tiff --output all.tif)";

}  // namespace

void AddExtract(Program& program) {
  Verb verb = program.AddVerb("extract", "Write the pictures of a document's pages as files");
  auto const options = std::make_shared<Options>();
  options->run.jobs = UsualJobs();
  verb.Argument("FILE", options->run.files.document, "The document");
  verb.Option("--pages", "LIST", "Only these, as in 1-3,7",
              [options](std::string const& text) { options->run.pages = ParsePages(text); });
  verb.Option("--output", "PATTERN", "Names of the files",
              [options](std::string const& text) { options->output = ParsePattern(text); });
  verb.Option("--format", "KIND", "keep, png, tiff, bmp, pnm or jpeg",
              [options](std::string const& text) { options->format = ParseFormat(text); });
  verb.Flag("--all", options->run.files.all, "Every picture of each page");
  verb.Flag("--as-stored", options->run.files.as_stored, "Do not turn pictures as they are shown");
  AddPasswordFile(verb, options->run.files.password);
  verb.Number("--jobs", options->run.jobs, 1, kMaxJobs,
              "Pages to read at a time (processors, up to 4)");
  verb.Flag("--force", options->run.force, "Replace files that exist");
  verb.Flag("--json", options->run.json, "Report on standard output as JSON");
  verb.Flag("--quiet", options->run.quiet, "Show no progress bar");
  verb.Footer(kFooter);
  verb.Runs([options] { return RunExtract(*options); });
}

}  // namespace sorrelin::tool

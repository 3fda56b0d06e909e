// Parses the arguments of page options and reports wrong ones.
#include "tools/make/pages/page_options.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <thread>

#include "tools/cli/jobs.h"
#include "tools/cli/text.h"
#include "tools/formats/byte_stream.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxDpi = 100000;
constexpr int kMaxQuality = 100;

int DotsOf(std::string const& option, std::string_view text) {
  int value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  bool const whole = error == std::errc{} && end == text.data() + text.size();
  if (whole && value >= 1 && value <= kMaxDpi) return value;
  throw UsageError(option,
                   "takes a number from 1 to " + std::to_string(kMaxDpi) + ", or two as in 204x98");
}

Resolution ParseDpi(std::string const& option, std::string const& text) {
  size_t const cross = text.find('x');
  if (cross == std::string::npos) return {DotsOf(option, text), DotsOf(option, text)};
  return {DotsOf(option, std::string_view(text).substr(0, cross)),
          DotsOf(option, std::string_view(text).substr(cross + 1))};
}

Paper ParsePage(std::string const& text) {
  if (auto const paper = ParsePaper(text)) return *paper;
  throw UsageError(
      "--page",
      "takes a3, a4 or any other from a0 to b10, letter, legal, executive, tabloid, or a "
      "size of 3 to 14400 points such as 210x297mm, 21cmx29.7cm, 8.5x11in or 595x842pt");
}

double ParseBorder(std::string const& text) {
  if (auto const border = ParseLength(text)) return *border;
  throw UsageError("--border",
                   "takes a length of up to 7200 points such as 10mm, 1cm, 0.5in or 36pt");
}

int ParseRotation(std::string const& text) {
  if (text == "auto") return 0;
  if (text == "90") return 90;
  if (text == "180") return 180;
  if (text == "270") return 270;
  throw UsageError("--rotate", "takes auto, 90, 180 or 270, not " + text);
}

Fit ParseFit(std::string const& text) {
  if (text == "within") return Fit::kWithin;
  if (text == "shrink") return Fit::kShrink;
  if (text == "fill") return Fit::kFill;
  if (text == "stretch") return Fit::kStretch;
  throw UsageError("--fit", "takes within, shrink, fill or stretch, not " + text);
}

Compression ParseCompression(std::string const& text) {
  constexpr std::pair<std::string_view, Compression> kNames[] = {
      {"auto", Compression::kAuto},   {"g4", Compression::kGroup4},
      {"flate", Compression::kFlate}, {"runlength", Compression::kRunLength},
      {"jpeg", Compression::kJpeg},   {"none", Compression::kNone}};
  for (auto const& [name, compression] : kNames) {
    if (name == text) return compression;
  }
  throw UsageError("--compression", "takes auto, g4, flate, runlength, jpeg or none, not " + text);
}

Sort ParseSort(std::string const& text) {
  if (text == "none") return Sort::kNone;
  if (text == "name") return Sort::kName;
  if (text == "natural") return Sort::kNatural;
  throw UsageError("--sort", "takes natural, name or none, not " + text);
}

}  // namespace

void AddJobs(Verb& verb, int& jobs) {
  verb.Number("--jobs", jobs, 1, kMaxJobs, "Pages to work on at a time (processors, up to 4)");
}

void AddFiles(Verb& verb, PageOptions& options, std::string const& name, std::string const& help) {
  verb.Argument(name, options.output, help);
  verb.Argument("IMAGE", options.images, "Pictures, or directories of them");
}

void AddPageStyle(Verb& verb, PageOptions& options) {
  PageStyle& style = options.style;
  verb.Option("--dpi", "N|NxM", "Dots per inch, in place of the files' own",
              [&style](std::string const& text) { style.dpi = ParseDpi("--dpi", text); });
  verb.Option(
      "--default-dpi", "N|NxM", "Dots per inch of files without their own (96)",
      [&style](std::string const& text) { style.default_dpi = ParseDpi("--default-dpi", text); });
  verb.Option("--page", "SIZE", "Page size: a4, letter, 210x297mm, ...",
              [&style](std::string const& text) { style.paper = ParsePage(text); });
  verb.Option("--fit", "KIND", "within, shrink, fill or stretch, with --page",
              [&style](std::string const& text) { style.fit = ParseFit(text); });
  verb.Needs("--fit", "--page");
  verb.Option("--border", "LENGTH", "Space around the picture: 10mm, 0.5in, ...",
              [&style](std::string const& text) { style.border = ParseBorder(text); });
  verb.Option("--rotate", "DEGREES", "auto, or 90, 180 or 270 further clockwise",
              [&style](std::string const& text) { style.rotate = ParseRotation(text); });
  verb.Option("--compression", "KIND", "auto, g4, flate, runlength, jpeg or none",
              [&style](std::string const& text) { style.compression = ParseCompression(text); });
  verb.Number("--quality", style.quality, 1, kMaxQuality, "Of JPEG coding, from 1 to 100 (75)");
  verb.Flag("--deskew", style.scan.deskew, "Straighten tilted pages");
  verb.Flag("--clean", style.scan.clean, "Remove specks");
  verb.Flag("--skip-blank", style.scan.skip_blank, "Leave blank pages out");
  verb.Flag("--plain", style.plain, "Only forms that simple readers take");
  verb.Flag("--keep-damaged", style.keep_damaged, "Make pages of damaged pictures too");
}

void AddRun(Verb& verb, PageOptions& options) {
  options.jobs = UsualJobs();
  verb.Flag("--recursive", options.recursive, "Take the pictures of directories further down too");
  verb.Option("--sort", "KIND", "natural, name or none: the order of the files",
              [&options](std::string const& text) { options.sort = ParseSort(text); });
  AddJobs(verb, options.jobs);
  AddReports(verb, options);
}

void AddReports(Verb& verb, PageOptions& options) {
  verb.Flag("--json", options.json, "Report on standard output as JSON");
  verb.Flag("--verbose", options.verbose, "Print a line for each page");
  verb.Flag("--quiet", options.quiet, "Print problems only: no progress bar, no changes");
}

namespace {

void CheckBorder(PageStyle const& style) {
  if (style.border == 0 || !style.paper) return;
  if (style.fit == Fit::kFill) {
    throw UsageError("--border", "a picture that fills the page has none: leave --fit fill out");
  }
  if (2 * style.border > std::min(style.paper->width, style.paper->height) - 1) {
    throw UsageError("--border", "leaves nothing of the page for the picture");
  }
}

}  // namespace

void ListFiles(PageOptions& options, std::string const& name) {
  CheckBorder(options.style);
  auto const& images = options.images;
  if (std::count(images.begin(), images.end(), kStandardInput) > 1) {
    throw UsageError("IMAGE", "- is named more than once, but standard input is one file");
  }
  if (options.output.empty()) throw UsageError(name, "the name is empty");
  if (!Utf16(options.output)) throw UsageError(name, "the name is not valid UTF-8");
  options.inputs = ListInputs(images, options.sort, options.recursive, &options.ignored);
  std::error_code error;
  if (!std::filesystem::exists(PathOf(options.output), error)) return;
  for (Input const& input : options.inputs) {
    if (std::filesystem::equivalent(PathOf(options.output), PathOf(input.name), error) && !error) {
      throw UsageError(name, input.name + " is one of the images");
    }
  }
}

}  // namespace sorrelin::tool

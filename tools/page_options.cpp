// Arguments as they are typed, and what is wrong with them.
#include "tools/page_options.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <thread>

#include "tools/image_source.h"
#include "tools/text.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxDpi = 100000;
constexpr unsigned kMaxJobs = 64;
constexpr unsigned kUsualMostJobs = 4;

int DotsOf(std::string const& option, std::string_view text) {
  int value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  bool const whole = error == std::errc{} && end == text.data() + text.size();
  if (whole && value >= 1 && value <= kMaxDpi) return value;
  throw CLI::ValidationError(
      option, "takes a number from 1 to " + std::to_string(kMaxDpi) + ", or two as in 204x98");
}

Resolution ParseDpi(std::string const& option, std::string const& text) {
  size_t const cross = text.find('x');
  if (cross == std::string::npos) return {DotsOf(option, text), DotsOf(option, text)};
  return {DotsOf(option, std::string_view(text).substr(0, cross)),
          DotsOf(option, std::string_view(text).substr(cross + 1))};
}

Paper ParsePage(std::string const& text) {
  if (auto const paper = ParsePaper(text)) return *paper;
  throw CLI::ValidationError(
      "--page",
      "takes a3, a4, a5, a6, letter, legal, tabloid, or a size of 3 to 14400 "
      "points such as 210x297mm, 21x29.7cm, 8.5x11in or 595x842pt");
}

Fit ParseFit(std::string const& text) {
  if (text == "within") return Fit::kWithin;
  if (text == "shrink") return Fit::kShrink;
  if (text == "fill") return Fit::kFill;
  if (text == "stretch") return Fit::kStretch;
  throw CLI::ValidationError("--fit", "takes within, shrink, fill or stretch, not " + text);
}

Compression ParseCompression(std::string const& text) {
  constexpr std::pair<std::string_view, Compression> kNames[] = {
      {"auto", Compression::kAuto},   {"g4", Compression::kGroup4},
      {"flate", Compression::kFlate}, {"runlength", Compression::kRunLength},
      {"jpeg", Compression::kJpeg},   {"none", Compression::kNone}};
  for (auto const& [name, compression] : kNames) {
    if (name == text) return compression;
  }
  throw CLI::ValidationError("--compression",
                             "takes auto, g4, flate, runlength, jpeg or none, not " + text);
}

Sort ParseSort(std::string const& text) {
  if (text == "none") return Sort::kNone;
  if (text == "name") return Sort::kName;
  if (text == "natural") return Sort::kNatural;
  throw CLI::ValidationError("--sort", "takes natural, name or none, not " + text);
}

// Processors, but not more than pictures of a usual size leave memory for.
unsigned UsualJobs() { return std::clamp(std::thread::hardware_concurrency(), 1u, kUsualMostJobs); }

}  // namespace

void AddFiles(CLI::App& verb, PageOptions& options, std::string const& name,
              std::string const& help) {
  verb.add_option(name, options.output, help)->required()->type_name("");
  verb.add_option("IMAGE", options.images, "Pictures, or directories of them")
      ->required()
      ->type_name("");
}

void AddPageStyle(CLI::App& verb, PageOptions& options) {
  PageStyle& style = options.style;
  verb.add_option_function<std::string>(
          "--dpi", [&style](std::string const& text) { style.dpi = ParseDpi("--dpi", text); },
          "Dots per inch, in place of the files' own")
      ->type_name("N|NxM");
  verb.add_option_function<std::string>(
          "--default-dpi",
          [&style](std::string const& text) {
            style.default_dpi = ParseDpi("--default-dpi", text);
          },
          "Dots per inch of files without their own (96)")
      ->type_name("N|NxM");
  CLI::Option* const page = verb.add_option_function<std::string>(
      "--page", [&style](std::string const& text) { style.paper = ParsePage(text); },
      "Page size: a4, letter, 210x297mm, ...");
  page->type_name("SIZE");
  verb.add_option_function<std::string>(
          "--fit", [&style](std::string const& text) { style.fit = ParseFit(text); },
          "within, shrink, fill or stretch, with --page")
      ->type_name("KIND")
      ->needs(page);
  verb.add_option_function<std::string>(
          "--compression",
          [&style](std::string const& text) { style.compression = ParseCompression(text); },
          "auto, g4, flate, runlength, jpeg or none")
      ->type_name("KIND");
  verb.add_option("--quality", style.quality, "Of JPEG coding, from 1 to 100 (75)")
      ->check(CLI::Range(1, 100).description(""))
      ->type_name("N");
  verb.add_flag("--recode", style.recode, "Decode and code JPEG and Group 4 files anew");
}

void AddRun(CLI::App& verb, PageOptions& options) {
  options.jobs = UsualJobs();
  verb.add_option_function<std::string>(
          "--sort", [&options](std::string const& text) { options.sort = ParseSort(text); },
          "natural, name or none: the order of the files")
      ->type_name("KIND");
  verb.add_option("--jobs", options.jobs, "Pages to code at a time (processors, up to 4)")
      ->check(CLI::Range(1u, kMaxJobs).description(""))
      ->type_name("N");
  verb.add_flag("--json", options.json, "Report on standard output as JSON");
  verb.add_flag("--quiet", options.quiet, "Show no progress bar");
}

void ListFiles(PageOptions& options, std::string const& name) {
  auto const& images = options.images;
  if (std::count(images.begin(), images.end(), kStandardInput) > 1) {
    throw CLI::ValidationError("IMAGE", "- stands more than once, and standard input is one file");
  }
  if (options.output.empty()) throw CLI::ValidationError(name, "the name is empty");
  if (!Utf16(options.output)) throw CLI::ValidationError(name, "the name is not valid UTF-8");
  options.inputs = ListInputs(images, options.sort);
  std::error_code error;
  if (!std::filesystem::exists(options.output, error)) return;
  for (Input const& input : options.inputs) {
    if (std::filesystem::equivalent(options.output, input.name, error) && !error) {
      throw CLI::ValidationError(name, input.name + " is one of the images");
    }
  }
}

}  // namespace sorrelin::tool

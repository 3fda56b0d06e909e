// Arguments as they are typed, and what is wrong with them.
#include "tools/page_options.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>

#include "tools/image_source.h"
#include "tools/text.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxDpi = 100000;

int DotsOf(std::string_view text) {
  int value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  bool const whole = error == std::errc{} && end == text.data() + text.size();
  if (whole && value >= 1 && value <= kMaxDpi) return value;
  throw CLI::ValidationError(
      "--dpi", "takes a number from 1 to " + std::to_string(kMaxDpi) + ", or two as in 204x98");
}

Resolution ParseDpi(std::string const& text) {
  size_t const cross = text.find('x');
  if (cross == std::string::npos) return {DotsOf(text), DotsOf(text)};
  return {DotsOf(std::string_view(text).substr(0, cross)),
          DotsOf(std::string_view(text).substr(cross + 1))};
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

}  // namespace

void AddFiles(CLI::App& verb, PageOptions& options, std::string const& name,
              std::string const& help) {
  verb.add_option(name, options.output, help)->required()->type_name("");
  verb.add_option("IMAGE", options.images, "Files with pictures, in the order of pages")
      ->required()
      ->type_name("");
}

void AddPageStyle(CLI::App& verb, PageOptions& options) {
  PageStyle& style = options.style;
  verb.add_option_function<std::string>(
          "--dpi", [&style](std::string const& text) { style.dpi = ParseDpi(text); },
          "Dots per inch, in place of the files' own")
      ->type_name("N|NxM");
  verb.add_option_function<std::string>(
          "--compression",
          [&style](std::string const& text) { style.compression = ParseCompression(text); },
          "auto, g4, flate, runlength, jpeg or none")
      ->type_name("KIND");
  verb.add_option("--quality", style.quality, "Of JPEG coding, from 1 to 100 (75)")
      ->check(CLI::Range(1, 100).description(""))
      ->type_name("N");
  verb.add_flag("--recode", options.recode, "Decode and code JPEG and Group 4 files anew");
}

void AddQuiet(CLI::App& verb, PageOptions& options) {
  verb.add_flag("--quiet", options.quiet, "Show no progress bar");
}

void CheckFiles(PageOptions const& options, std::string const& name) {
  auto const& images = options.images;
  if (std::count(images.begin(), images.end(), kStandardInput) > 1) {
    throw CLI::ValidationError("IMAGE", "- stands more than once, and standard input is one file");
  }
  if (options.output == kStandardInput) {
    throw CLI::ValidationError(name, "a document does not go to standard output: name a file");
  }
  if (options.output.empty()) throw CLI::ValidationError(name, "the name is empty");
  if (!Utf16(options.output)) throw CLI::ValidationError(name, "the name is not valid UTF-8");
  for (std::string const& image : images) {
    std::error_code error;
    if (std::filesystem::equivalent(options.output, image, error) && !error) {
      throw CLI::ValidationError(name, image + " is one of the images");
    }
  }
}

}  // namespace sorrelin::tool

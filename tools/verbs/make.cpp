// sorrelin make: a new document with the pictures of the files as its pages.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/document.h"
#include "tools/image_source.h"
#include "tools/messages.h"
#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/text.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

struct MakeOptions {
  std::string output;
  std::vector<std::string> images;
  Description description;
  PageStyle style;
  bool recode = false;
  bool force = false;
  bool quiet = false;
};

// One run: pages go from the images to the document, and what fails is named.
class Make {
 public:
  explicit Make(MakeOptions const& options) : options_(options), progress_(!options.quiet) {}

  int Run() {
    std::string problem;
    auto const output = OutputFile::Open(options_.output, options_.force, problem);
    if (output == nullptr) return GiveUp(problem);
    {
      Document document;
      if (!document.Create(output->path(), options_.description, problem)) return GiveUp(problem);
      if (!AddImages(document)) return kExitFailure;
      if (document.PageCount() == 0) return GiveUp("is not written: it would have no pages");
      if (!document.Finish(problem)) return GiveUp(problem);
    }
    if (!output->Commit(problem)) return GiveUp(problem);
    return failed_ ? kExitFailure : kExitSuccess;
  }

 private:
  int GiveUp(std::string const& problem) {
    Report(options_.output, problem);
    return kExitFailure;
  }

  void Report(std::string const& name, std::string const& problem) {
    progress_.Clear();
    PrintProblem(name == kStandardInput ? "standard input" : name, problem);
    failed_ = true;
  }

  // False if the document is lost.
  bool AddImages(Document& document) {
    for (done_ = 0; done_ < options_.images.size(); ++done_) {
      PageResult const result = AddImage(document, options_.images[done_]);
      if (result == PageResult::kBroken) return false;
      if (result == PageResult::kFull) {
        ReportRest();
        return true;
      }
      ShowProgress(1.0);
    }
    return true;
  }

  PageResult AddImage(Document& document, std::string const& name) {
    std::string problem;
    auto const source = OpenImage(name, problem);
    if (source == nullptr) {
      Report(name, problem);
      return PageResult::kRefused;
    }
    int const pages = source->PageCount();
    for (int page = 0; page < pages; ++page) {
      PageResult const result = AddPage(document, *source, page, problem);
      if (result == PageResult::kBroken) {
        Report(options_.output, problem);
        return result;
      }
      std::string const place = pages > 1 ? "page " + std::to_string(page + 1) + ": " : "";
      if (result != PageResult::kWritten) Report(name, place + problem);
      if (result == PageResult::kFull) return result;
      ShowProgress((page + 1.0) / pages);
    }
    if (std::string const damage = source->Damage(); !damage.empty()) Report(name, damage);
    return PageResult::kWritten;
  }

  PageResult AddPage(Document& document, ImageSource& source, int page, std::string& problem) {
    if (!options_.recode) {
      auto const stored = source.Stored(page);
      if (stored && Accepts(options_.style.compression, *stored)) {
        return document.Add(*stored, options_.style, problem);
      }
    }
    auto picture = source.Decode(page);
    if (picture) return document.Add(std::move(*picture), options_.style, problem);
    problem = "cannot be decoded: it is damaged, too large, or of a kind that is not read";
    return PageResult::kRefused;
  }

  void ReportRest() {
    size_t const rest = options_.images.size() - done_ - 1;
    std::string const files = rest == 1 ? " further file is" : " further files are";
    if (rest > 0) Report(options_.output, std::to_string(rest) + files + " left out");
  }

  // `share` is what is done of the current image.
  void ShowProgress(double share) {
    progress_.Update((static_cast<double>(done_) + share) /
                     static_cast<double>(options_.images.size()));
  }

  MakeOptions const& options_;
  Progress progress_;
  size_t done_ = 0;
  bool failed_ = false;
};

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

void AddStyle(CLI::App& verb, PageStyle& style) {
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
}

// Arguments that no option alone can judge.
void CheckTogether(MakeOptions const& options) {
  auto const& images = options.images;
  if (std::count(images.begin(), images.end(), kStandardInput) > 1) {
    throw CLI::ValidationError("IMAGE", "- stands more than once, and standard input is one file");
  }
  if (options.output == kStandardInput) {
    throw CLI::ValidationError("OUT", "a document does not go to standard output: name a file");
  }
  if (options.output.empty()) throw CLI::ValidationError("OUT", "the name is empty");
  if (!Utf16(options.output)) throw CLI::ValidationError("OUT", "the name is not valid UTF-8");
  for (std::string const& image : images) {
    std::error_code error;
    if (std::filesystem::equivalent(options.output, image, error) && !error) {
      throw CLI::ValidationError("OUT", image + " is one of the images");
    }
  }
}

constexpr char kFooter[] =
    R"(Every file that holds a picture will do: BMP, GIF, JPEG, JPEG 2000, PNG, PNM,
TIFF with any number of pages, WebP. - is standard input. Pages keep the
resolution of their picture; without one it is 96 dots per inch.

Compression "auto" is Group 4 for black and white and Flate for everything
else, so that nothing is lost. JPEG files, and Group 4 TIFF pages of one strip,
go into the document as they are; if they must be decoded (because of --recode,
or because they lie on their side), JPEG files are coded as JPEG again.

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
  verb.add_option("OUT", options->output, "The document to make")->required()->type_name("");
  verb.add_option("IMAGE", options->images, "Files with pictures, in the order of pages")
      ->required()
      ->type_name("");
  Description& description = options->description;
  AddText(verb, "--title", description.title, kMaxTextUnits, "Title of the document");
  AddText(verb, "--author", description.author, kMaxTextUnits, "Its author");
  AddText(verb, "--subject", description.subject, kMaxTextUnits, "Its subject");
  AddText(verb, "--keywords", description.keywords, kMaxKeywordsUnits, "Its keywords");
  AddStyle(verb, options->style);
  verb.add_flag("--recode", options->recode, "Decode and code JPEG and Group 4 files anew");
  verb.add_flag("--force", options->force, "Replace OUT if it exists");
  verb.add_flag("--quiet", options->quiet, "Show no progress bar");
  verb.footer(kFooter);
  verb.callback([options, &exit_code] {
    CheckTogether(*options);
    exit_code = Make(*options).Run();
  });
}

}  // namespace sorrelin::tool

// Runs a scan. Each page first goes into a file of its own, which is removed when the document has
// the page.
#include "tools/scan/scan_run.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>

#include "tools/cli/command_line.h"
#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/cli/watchdog.h"
#include "tools/formats/image_file.h"
#include "tools/formats/picture/plain_picture.h"
#include "tools/make/pages/scan_cleaning.h"
#include "tools/ocr/page_texts.h"
#include "tools/scan/document_names.h"
#include "tools/scan/scanner.h"
#include "tools/scan/scanner_setup.h"

namespace sorrelin::tool {
namespace {

constexpr std::chrono::seconds kLongestClosing(5);
constexpr char kNoScanner[] = "there is none (connect one, or name it)";

// A page that cannot be looked at is not blank.
bool IsBlank(std::filesystem::path const& path, PageStyle const& style) {
  std::string ignored;
  auto const file = ImageFile::Open(path.string(), ignored);
  auto const source = file != nullptr ? file->Next(ignored) : nullptr;
  auto picture = source != nullptr ? source->Decode(0, ignored) : std::nullopt;
  if (!picture || !GiveUpSamples(*picture)) return false;
  picture->dpi = style.dpi.value_or(style.default_dpi);
  return InkPercent(*picture) <= kBlankPercent;
}

class ScanRun {
 public:
  explicit ScanRun(ScanOptions& options)
      : options_(options), names_(options.document.pages.output) {
    looks_for_blanks_ = options.blank_separates || Style().scan.skip_blank;
    Style().scan.skip_blank = false;
  }

  int Run() {
    bool const done = Open() && Prepare() && ScanAll();
    if (!problem_.empty()) PrintProblem(Name(), problem_);
    EndDocument();
    int const exit_code = done ? kExitSuccess : kExitFailure;
    Close(exit_code);
    return exit_code;
  }

 private:
  using Outcome = Scanner::Outcome;

  PageOptions& Pages() { return options_.document.pages; }
  PageStyle& Style() { return Pages().style; }
  std::string Name() const { return options_.device.empty() ? "scanner" : options_.device; }
  std::string ScanName() const { return "scan " + std::to_string(scanned_); }

  // Each of these says in problem_ what went wrong, unless that has been reported.

  bool Open() {
    if (options_.device.empty()) {
      std::vector<std::string> names, titles;
      if (!Scanner::List(names, titles, problem_)) return false;
      if (names.empty()) return problem_ = kNoScanner, false;
      options_.device = names.front();
    }
    scanner_ = Scanner::Open(options_.device, problem_);
    folder_ = scanner_ != nullptr ? OutputFile::Temporary(problem_) : nullptr;
    return folder_ != nullptr;
  }

  bool Prepare() {
    if (!SetUp(*scanner_, options_, problem_)) return false;
    int const dots = scanner_->Resolution();
    SayResolution(dots);
    if (!Style().dpi && dots > 0) Style().dpi = {dots, dots};
    return SuitsCoding(scanner_->Depth());
  }

  // A sheet whose page could not be coded would go through the feeder for nothing.
  bool SuitsCoding(int depth) {
    Compression const compression = Style().compression;
    if (depth == 1 && compression == Compression::kJpeg) {
      problem_ = "scans black and white, and JPEG codes grey and colour only (--mode grey)";
    }
    if (depth > 1 && compression == Compression::kGroup4) {
      problem_ = "scans more than black and white, and Group 4 codes no more (--mode bilevel)";
    }
    return problem_.empty();
  }

  // Scanners take the nearest resolution that they have.
  void SayResolution(int dots) {
    int const wanted = options_.resolution;
    if (wanted == 0 || dots == 0 || dots == wanted || Pages().quiet) return;
    PrintNote(Name() + ": scans at " + std::to_string(dots) + " dots per inch in place of " +
              std::to_string(wanted));
  }

  bool ScanAll() {
    bool const is_feeder = IsFeederChosen(*scanner_);
    for (;;) {
      if (options_.prompt && !AskForPage()) return true;
      Outcome const outcome = ScanPage();
      if (outcome == Outcome::kFailed) return false;
      if (outcome == Outcome::kNoMorePages) {
        if (scanned_ > 0 && !options_.prompt) return true;
        problem_ = "has no pages in its feeder (put some in)";
        if (!options_.prompt) return false;
        PrintProblem(Name(), problem_);
        problem_.clear();
      } else if (!TakePage(outcome)) {
        return false;
      }
      if (!is_feeder && !options_.prompt) return true;
      if (!is_feeder) Rest();
    }
  }

  bool AskForPage() {
    PrintNote("page " + std::to_string(scanned_ + 1) +
              ": put it in and press Enter, or q and Enter to end");
    std::string answer;
    return std::getline(std::cin, answer) && answer != "q";
  }

  Outcome ScanPage() {
    Watchdog watchdog(std::chrono::seconds(options_.wait), [this] { GiveUp(); });
    watchdog.Begin();
    page_ = folder_->path().parent_path() / ("page" + std::to_string(scanned_ + 1));
    return scanner_->ScanPage(
        page_, Style(), [&] { watchdog.Begin(); }, problem_);
  }

  void Rest() {
    Watchdog watchdog(std::chrono::seconds(options_.wait), [this] { GiveUp(); });
    watchdog.Begin();
    scanner_->Rest();
  }

  // All is done, so a library that does not let the scanner go is left.
  void Close(int exit_code) {
    Watchdog watchdog(kLongestClosing, [exit_code] {
      RemoveOutputForGood();
      std::_Exit(exit_code);
    });
    watchdog.Begin();
    scanner_.reset();
  }

  // The scanner's library may never come back. Every page before this one is safe.
  [[noreturn]] void GiveUp() {
    PrintProblem(Name(), "has sent nothing for " + std::to_string(options_.wait) +
                             " seconds (see to the scanner and run this again)");
    EndDocument();
    RemoveOutputForGood();
    std::_Exit(kExitFailure);
  }

  bool TakePage(Outcome outcome) {
    ++scanned_;
    if (outcome == Outcome::kShortPage) {
      PrintNote(ScanName() + ": the scanner sent fewer lines than it had announced");
    }
    bool const is_blank = looks_for_blanks_ && IsBlank(page_, Style());
    bool const done = is_blank || AddPage();
    std::error_code ignored;
    std::filesystem::remove(page_, ignored);
    if (is_blank) PassOver();
    if (options_.pages_each > 0 && pages_ == options_.pages_each) EndDocument();
    return done;
  }

  void PassOver() {
    if (!Pages().quiet) PrintNote(ScanName() + ": is blank and left out");
    if (options_.blank_separates) EndDocument();
  }

  bool AddPage() {
    Pages().output = names_.Current();
    Pages().inputs = {{page_.string(), {}, ScanName()}};
    bool const added = AppendPages(options_.document) == kExitSuccess;
    FlushOutput();
    if (added) ++pages_;
    return added;
  }

  void EndDocument() {
    if (pages_ > 0 && !Pages().quiet) {
      PrintNote(Pages().output + ": " + std::to_string(pages_) +
                (pages_ == 1 ? " page scanned" : " pages scanned"));
    }
    if (pages_ > 0) names_.EndDocument();
    pages_ = 0;
  }

  ScanOptions& options_;
  DocumentNames names_;
  bool looks_for_blanks_ = false;
  std::unique_ptr<Scanner> scanner_;
  std::unique_ptr<OutputFile> folder_;  // of the pages under way
  std::filesystem::path page_;          // the one that is scanned
  int scanned_ = 0;
  int pages_ = 0;  // of the document
  std::string problem_;
};

}  // namespace

int ListScanners() {
  std::vector<std::string> names, titles;
  std::string problem;
  if (!Scanner::List(names, titles, problem)) {
    PrintProblem("scanner", problem);
    return kExitFailure;
  }
  if (names.empty()) PrintNote(std::string("scanner: ") + kNoScanner);
  for (size_t i = 0; i < names.size(); ++i) {
    std::printf("%s: %s\n", names[i].c_str(), titles[i].c_str());
    auto const scanner = Scanner::Open(names[i], problem);
    if (scanner == nullptr) {
      PrintProblem(names[i], problem);
      continue;
    }
    for (ScannerOption const& option : scanner->Options()) {
      std::printf("  %s=%s  %s\n", option.name.c_str(), option.value.c_str(),
                  option.values.c_str());
    }
  }
  return problem.empty() ? kExitSuccess : kExitFailure;
}

int ScanPages(ScanOptions options) {
  std::string problem;
  OcrOptions const& ocr = options.document.pages.ocr;
  if (!ocr.IsWanted() || CheckOcr(ocr, problem)) return ScanRun(options).Run();
  PrintProblem("--ocr", problem);
  return kExitFailure;
}

}  // namespace sorrelin::tool

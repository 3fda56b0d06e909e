// Runs a scan. Each page first goes into a file of its own, which is removed when the document has
// the page.
#include "tools/scan/scan_run.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "tools/cli/command_line.h"
#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/scan/scanner.h"

namespace sorrelin::tool {
namespace {

constexpr double kMillimetresPerPoint = 25.4 / 72;
constexpr char kNoScanner[] = "there is none (connect one, or name it)";

std::string Lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool HasAny(std::string const& text, std::initializer_list<std::string_view> words) {
  return std::ranges::any_of(
      words, [&](std::string_view word) { return Lower(text).find(word) != std::string::npos; });
}

std::vector<std::string> Split(std::string const& text) {
  std::vector<std::string> parts(1);
  for (char const c : text) {
    if (c == '|') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

bool IsFeeder(std::string const& source) { return HasAny(source, {"feeder", "adf", "duplex"}); }

// What scanners call the names that are the same for all of them.
bool IsSource(std::string const& wanted, std::string const& name) {
  if (wanted == "flatbed") return HasAny(name, {"flatbed", "platen"});
  if (wanted == "duplex") return HasAny(name, {"duplex", "both"});
  if (wanted == "adf") return IsFeeder(name) && !HasAny(name, {"duplex", "both"});
  return wanted == name;
}

bool IsMode(std::string const& wanted, std::string const& name) {
  if (wanted == "bilevel") return HasAny(name, {"lineart", "bilevel", "binary", "black & white"});
  if (wanted == "grey") return HasAny(name, {"gray", "grey"});
  if (wanted == "colour") return HasAny(name, {"color", "colour", "rgb"});
  return wanted == name;
}

class ScanRun {
 public:
  explicit ScanRun(ScanOptions& options) : options_(options) {}

  int Run() {
    bool const done = Open() && Prepare() && ScanAll();
    if (!problem_.empty()) PrintProblem(Name(), problem_);
    if (pages_ > 0 && !options_.document.pages.quiet) {
      PrintNote(options_.document.pages.output + ": " + std::to_string(pages_) +
                (pages_ == 1 ? " page scanned" : " pages scanned"));
    }
    return done ? kExitSuccess : kExitFailure;
  }

 private:
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
    if (!options_.source.empty() && !Choose("source", options_.source, IsSource)) return false;
    if (!options_.mode.empty() && !ChooseMode()) return false;
    if (options_.resolution > 0 &&
        !scanner_->Set("resolution", std::to_string(options_.resolution), problem_)) {
      return false;
    }
    if (!SetArea()) return false;
    for (auto const& [name, value] : options_.settings) {
      if (!scanner_->Set(name, value, problem_)) return false;
    }
    PageStyle& style = options_.document.pages.style;
    int const dots = scanner_->Resolution();
    SayResolution(dots);
    if (!style.dpi && dots > 0) style.dpi = {dots, dots};
    return true;
  }

  // Scanners take the nearest resolution that they have.
  void SayResolution(int dots) const {
    int const wanted = options_.resolution;
    if (wanted == 0 || dots == 0 || dots == wanted || options_.document.pages.quiet) return;
    PrintNote(Name() + ": scans at " + std::to_string(dots) + " dots per inch in place of " +
              std::to_string(wanted));
  }

  std::optional<ScannerOption> Find(std::string const& name) {
    for (ScannerOption const& option : scanner_->Options()) {
      if (option.name == name) return option;
    }
    return std::nullopt;
  }

  // Sets an option to the first of its values that is meant.
  template <typename Meant>
  bool Choose(std::string const& name, std::string const& wanted, Meant is_meant) {
    auto const option = Find(name);
    if (!option) return problem_ = "has no choice of --" + name + " (leave it out)", false;
    for (std::string const& value : Split(option->values)) {
      if (is_meant(wanted, value)) return scanner_->Set(name, value, problem_);
    }
    problem_ = "has no " + name + " " + wanted + " (it has " + option->values + ")";
    return false;
  }

  // Some scanners have bilevel pages as grey ones of one bit.
  bool ChooseMode() {
    auto const depth = Find("depth");
    bool const has_bits = depth && std::ranges::count(Split(depth->values), "1") > 0;
    bool const is_bilevel = options_.mode == "bilevel";
    if (is_bilevel && Choose("mode", "bilevel", IsMode)) return true;
    if (is_bilevel && !has_bits) return false;
    problem_.clear();
    if (!Choose("mode", is_bilevel ? "grey" : options_.mode, IsMode)) return false;
    if (is_bilevel) return scanner_->Set("depth", "1", problem_);
    auto const now = Find("depth");
    return !now || now->value != "1" || scanner_->Set("depth", "8", problem_);
  }

  // The paper from the upper left corner on, where the scanner takes millimetres.
  bool SetArea() {
    auto const paper = options_.document.pages.style.paper;
    auto const right = Find("br-x");
    if (!paper || !right || !right->in_millimetres) return true;
    return scanner_->Set("tl-x", "0", problem_) && scanner_->Set("tl-y", "0", problem_) &&
           scanner_->Set("br-x", std::to_string(paper->width * kMillimetresPerPoint), problem_) &&
           scanner_->Set("br-y", std::to_string(paper->height * kMillimetresPerPoint), problem_);
  }

  bool ScanAll() {
    auto const source = Find("source");
    bool const is_feeder = source && IsFeeder(source->value);
    for (;;) {
      if (options_.prompt && !AskForPage()) return true;
      auto const path = folder_->path().parent_path() / ("page" + std::to_string(pages_ + 1));
      auto const outcome = scanner_->ScanPage(path, problem_);
      if (outcome == Scanner::Outcome::kFailed) return false;
      if (outcome == Scanner::Outcome::kPage && !AddPage(path)) return false;
      if (outcome == Scanner::Outcome::kNoMorePages) {
        if (pages_ > 0 && !options_.prompt) return true;
        problem_ = "has no pages in its feeder (put some in)";
        if (!options_.prompt) return false;
        PrintProblem(Name(), problem_);
        problem_.clear();
      }
      if (!is_feeder) scanner_->Rest();
      if (!is_feeder && !options_.prompt) return true;
    }
  }

  bool AskForPage() {
    PrintNote("page " + std::to_string(pages_ + 1) +
              ": put it in and press Enter, or q and Enter to end");
    std::string answer;
    return std::getline(std::cin, answer) && answer != "q";
  }

  bool AddPage(std::filesystem::path const& path) {
    std::string const shown = "page " + std::to_string(pages_ + 1);
    options_.document.pages.inputs = {{path.string(), {}, shown}};
    bool const added = AppendPages(options_.document) == kExitSuccess;
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    if (added) ++pages_;
    return added;
  }

  std::string Name() const { return options_.device.empty() ? "scanner" : options_.device; }

  ScanOptions& options_;
  std::unique_ptr<Scanner> scanner_;
  std::unique_ptr<OutputFile> folder_;  // of the pages under way
  int pages_ = 0;
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

int ScanPages(ScanOptions options) { return ScanRun(options).Run(); }

}  // namespace sorrelin::tool

// The choices that scanners call by names of their own.
#include "tools/scan/scanner_setup.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

namespace sorrelin::tool {
namespace {

constexpr double kMillimetresPerPoint = 25.4 / 72;

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

std::optional<ScannerOption> Find(Scanner& scanner, std::string const& name) {
  for (ScannerOption const& option : scanner.Options()) {
    if (option.name == name) return option;
  }
  return std::nullopt;
}

class Setup {
 public:
  Setup(Scanner& scanner, ScanOptions const& options, std::string& problem)
      : scanner_(scanner), options_(options), problem_(problem) {}

  bool Run() {
    if (!options_.source.empty() && !Choose("source", options_.source, IsSource)) return false;
    if (!options_.mode.empty() && !ChooseMode()) return false;
    if (options_.resolution > 0 && !Set("resolution", std::to_string(options_.resolution))) {
      return false;
    }
    if (!SetArea()) return false;
    return std::ranges::all_of(options_.settings, [this](auto const& setting) {
      return Set(setting.first, setting.second);
    });
  }

 private:
  bool Set(std::string const& name, std::string const& value) {
    return scanner_.Set(name, value, problem_);
  }

  // Sets an option to the first of its values that is meant.
  template <typename Meant>
  bool Choose(std::string const& name, std::string const& wanted, Meant is_meant) {
    auto const option = Find(scanner_, name);
    if (!option) return problem_ = "has no choice of --" + name + " (leave it out)", false;
    for (std::string const& value : Split(option->values)) {
      if (is_meant(wanted, value)) return Set(name, value);
    }
    problem_ = "has no " + name + " " + wanted + " (it has " + option->values + ")";
    return false;
  }

  // Some scanners have bilevel pages as grey ones of one bit.
  bool ChooseMode() {
    auto const depth = Find(scanner_, "depth");
    bool const has_bits = depth && std::ranges::count(Split(depth->values), "1") > 0;
    bool const is_bilevel = options_.mode == "bilevel";
    if (is_bilevel && Choose("mode", "bilevel", IsMode)) return true;
    if (is_bilevel && !has_bits) return false;
    problem_.clear();
    if (!Choose("mode", is_bilevel ? "grey" : options_.mode, IsMode)) return false;
    if (is_bilevel) return Set("depth", "1");
    auto const now = Find(scanner_, "depth");
    return !now || now->value != "1" || Set("depth", "8");
  }

  // The paper from the upper left corner on, where the scanner takes millimetres.
  bool SetArea() {
    auto const paper = options_.document.pages.style.paper;
    auto const right = Find(scanner_, "br-x");
    if (!paper || !right || !right->in_millimetres) return true;
    return Set("tl-x", "0") && Set("tl-y", "0") &&
           Set("br-x", std::to_string(paper->width * kMillimetresPerPoint)) &&
           Set("br-y", std::to_string(paper->height * kMillimetresPerPoint));
  }

  Scanner& scanner_;
  ScanOptions const& options_;
  std::string& problem_;
};

}  // namespace

bool SetUp(Scanner& scanner, ScanOptions const& options, std::string& problem) {
  return Setup(scanner, options, problem).Run();
}

bool IsFeederChosen(Scanner& scanner) {
  auto const source = Find(scanner, "source");
  return source && IsFeeder(source->value);
}

}  // namespace sorrelin::tool

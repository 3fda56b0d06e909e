// A scanner: its options, and its pages as picture files.
#ifndef TOOLS_SCAN_SCANNER_H_
#define TOOLS_SCAN_SCANNER_H_

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/make/pages/page_style.h"

namespace sorrelin::tool {

// What a scanner can do by one of its options.
struct ScannerOption {
  std::string name;
  std::string value;   // now; empty for a button, or where it cannot be read
  std::string values;  // "a|b|c", "1..1200" or ""
  bool in_millimetres = false;
};

class Scanner {
 public:
  // Names and descriptions of the scanners that are there, one a line. False with the reason in
  // `problem`.
  static bool List(std::vector<std::string>& names, std::vector<std::string>& titles,
                   std::string& problem);

  // Opens a scanner by name, or the first one if that is empty. nullptr with the reason in
  // `problem`.
  static std::unique_ptr<Scanner> Open(std::string const& name, std::string& problem);

  virtual ~Scanner() = default;

  virtual std::string const& name() const = 0;
  virtual std::vector<ScannerOption> Options() = 0;
  // Sets an option that is there and active. False with the reason in `problem`.
  virtual bool Set(std::string const& option, std::string const& value, std::string& problem) = 0;
  // Dots per inch, 0 if the scanner does not say.
  virtual int Resolution() = 0;
  // Bits of a sample of the next page, 0 if the scanner does not say.
  virtual int Depth() = 0;

  // A short page has fewer lines than the scanner had announced.
  enum class Outcome { kPage, kShortPage, kNoMorePages, kFailed };
  // Scans a page into a file, line by line, coded as pages of this style are. `alive` is called
  // whenever the scanner has answered. A page that fails has the reason in `problem`.
  virtual Outcome ScanPage(std::filesystem::path const& file, PageStyle const& style,
                           std::function<void()> const& alive, std::string& problem) = 0;
  // Lets the scanner come to rest: the next page is another run of it, and not of its feeder.
  virtual void Rest() = 0;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_SCANNER_H_

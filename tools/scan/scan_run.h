// One run that scans pages into documents.
#ifndef TOOLS_SCAN_SCAN_RUN_H_
#define TOOLS_SCAN_SCAN_RUN_H_

#include <string>
#include <utility>
#include <vector>

#include "tools/make/update_document.h"

namespace sorrelin::tool {

inline constexpr int kUsualWait = 300;  // seconds

struct ScanOptions {
  UpdateOptions document;  // its name may be a pattern, as in DocumentNames
  std::string device;      // empty: the first one
  std::string source;      // flatbed, adf, duplex, or a name of the scanner's own
  std::string mode;        // bilevel, grey, colour, or a name of the scanner's own
  int resolution = 0;      // dots per inch; 0: the scanner's usual one
  std::vector<std::pair<std::string, std::string>> settings;  // by the scanner's own names
  bool prompt = false;                                        // ask before each page
  bool blank_separates = false;  // a blank page ends a document, and belongs to none
  int pages_each = 0;            // of a document, after which the next begins; 0: any number
  int wait = kUsualWait;         // seconds without data until a scanner is given up; 0: without end
};

// Prints the scanners that are there and what they take, and returns the exit code.
int ListScanners();

// Adds a page for each sheet, one by one: each is on the disk before the next is asked for. Names
// on standard error what fails, and returns the exit code.
int ScanPages(ScanOptions options);

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_SCAN_RUN_H_

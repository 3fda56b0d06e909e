// What is set at a scanner before its first page.
#ifndef TOOLS_SCAN_SCANNER_SETUP_H_
#define TOOLS_SCAN_SCANNER_SETUP_H_

#include <string>

#include "tools/scan/scan_run.h"
#include "tools/scan/scanner.h"

namespace sorrelin::tool {

// Sets source, mode, resolution, area and everything else as the options ask. False with the reason
// in `problem`.
bool SetUp(Scanner& scanner, ScanOptions const& options, std::string& problem);

// Whether the scanner takes its pages from a feeder now.
bool IsFeederChosen(Scanner& scanner);

}  // namespace sorrelin::tool

#endif  // TOOLS_SCAN_SCANNER_SETUP_H_

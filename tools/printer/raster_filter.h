// The filter of a print queue: a job's raster becomes a PDF document on standard output.
#ifndef TOOLS_PRINTER_RASTER_FILTER_H_
#define TOOLS_PRINTER_RASTER_FILTER_H_

#include <string>

namespace sorrelin::tool {

// What the scheduler passes. None of it is trusted.
struct FilterJob {
  std::string user;
  std::string title;
  int copies = 1;          // of the file; a job from standard input has them already
  std::string options;     // NAME=VALUE, separated by blanks
  std::string file = "-";  // "-": standard input
};

// The job of the arguments `job user title copies options [file]`. False, with a message, if there
// are too few or too many, or the copies are no number from 1 on.
bool ReadFilterArguments(int argc, char** argv, FilterJob& job);

// Writes the document and returns the exit code. Nothing goes to standard output before the
// document is complete.
int RunRasterFilter(FilterJob const& job);

}  // namespace sorrelin::tool

#endif  // TOOLS_PRINTER_RASTER_FILTER_H_

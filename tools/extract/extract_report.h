// The report of a run that extracts pictures.
#ifndef TOOLS_EXTRACT_EXTRACT_REPORT_H_
#define TOOLS_EXTRACT_EXTRACT_REPORT_H_

#include <string>
#include <vector>

#include "tools/extract/page_transfer.h"

namespace sorrelin::tool {

struct WrittenFile {
  std::string name;
  DWORD page = 0;  // counts from 1
  PictureHead head;
  uint64_t bytes = 0;
};

struct ExtractProblem {
  std::string file;
  DWORD page = 0;  // counts from 1; 0: the problem is the file's
  std::string problem;
};

struct ExtractReport {
  std::string document;
  std::vector<WrittenFile> files;
  std::vector<ExtractProblem> problems;
};

// As JSON, in the order of pages and pictures.
std::string JsonOf(ExtractReport report);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_EXTRACT_REPORT_H_

// The record of one page: what the report says about it.
#ifndef TOOLS_MAKE_PAGES_PAGE_RECORD_H_
#define TOOLS_MAKE_PAGES_PAGE_RECORD_H_

#include <cstdint>
#include <string>

#include "tools/formats/picture/changes.h"
#include "tools/formats/picture/resolution.h"

namespace sorrelin::tool {

// Where a page's resolution comes from.
enum class DpiOrigin { kFile, kOption, kDefault };

// Filled where a page is coded, except for the first three members, which are known where it is
// written.
struct PageRecord {
  std::string file;
  int page_of_file = 0;     // counted from 1
  unsigned page = 0;        // of the document, counted from 1
  char const* coding = "";  // as --compression names it, or "jpx"
  bool passed = false;      // the file's coded data, untouched; otherwise coded anew
  uint64_t bytes = 0;       // of the image's data in the document
  Changes changes;
  Resolution dpi;
  DpiOrigin origin = DpiOrigin::kFile;
  double ink_percent = 100;  // of a page that is looked at for ink
  std::string damage;        // what is lost of a damaged picture that is kept; empty: nothing
};

// An object for the list of pages in the report, indented as its element.
std::string JsonOf(PageRecord const& record);

// One line for --verbose, without its end.
std::string LineOf(PageRecord const& record);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_RECORD_H_

// A line of a list: the document that it asks for.
#ifndef TOOLS_BATCH_LIST_LINE_H_
#define TOOLS_BATCH_LIST_LINE_H_

#include <string>

#include "tools/cli/command_line.h"
#include "tools/make/make_document.h"

namespace sorrelin::tool {

// What `make` is to do for a line such as
//   {"output": "a.pdf", "pictures": ["1.tif", "2.tif"], "options": ["--page", "a4"]}
// and a signature: sixteen digits that change with the options, and with the names, sizes and times
// of the pictures that are there now. Times count by being the same: clocks of other machines do
// not matter.
struct ListDocument {
  MakeOptions options;
  std::string signature;
};

// Parses the lines of one thread: to know the options takes longer than to parse a line.
class LineParser {
 public:
  LineParser();

  // A document is made with one job unless its options say otherwise. Throws UsageError.
  ListDocument Parse(std::string const& text);

 private:
  MakeOptions options_;
  MakeOptions usual_;
  Program program_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_BATCH_LIST_LINE_H_

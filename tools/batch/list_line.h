// A line of a list: the document that it asks for.
#ifndef TOOLS_BATCH_LIST_LINE_H_
#define TOOLS_BATCH_LIST_LINE_H_

#include <memory>
#include <string>

#include "tools/make/make_document.h"

namespace sorrelin::tool {

// What `make` is to do for a line such as
//   {"output": "a.pdf", "pictures": ["1.tif", "2.tif"], "options": ["--page", "a4"]}
// with one job unless the options say otherwise. Throws UsageError.
std::unique_ptr<MakeOptions> ParseListLine(std::string const& text);

// Sixteen digits that change with the options, and with the names, sizes and times of the pictures
// that are there now. Times count by being the same: clocks of other machines do not matter.
std::string SignatureOf(std::string const& text, MakeOptions const& options);

}  // namespace sorrelin::tool

#endif  // TOOLS_BATCH_LIST_LINE_H_

// Text layers for the new pages of a document that is not committed yet.
#ifndef TOOLS_MAKE_ADD_TEXTS_H_
#define TOOLS_MAKE_ADD_TEXTS_H_

#include <filesystem>
#include <string>

#include "tools/make/pages/page_adder.h"

namespace sorrelin::tool {

// Whether the recognition that is asked for can start; otherwise that is reported.
bool CheckTexts(PageOptions const& options, PageAdder& adder);

// Recognises the pages from `first`, counted from 0, to before `end` and lays their text on them,
// in the complete document `path`, which has its directory to itself. Reports pages without text.
// False with the reason in `problem` if the document is lost.
bool AddTexts(std::filesystem::path const& path, unsigned first, unsigned end,
              PageOptions const& options, PageAdder& adder, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_ADD_TEXTS_H_

// The files that a command line names: those named themselves, and those in directories.
#ifndef TOOLS_MAKE_INPUT_LIST_H_
#define TOOLS_MAKE_INPUT_LIST_H_

#include <string>
#include <string_view>
#include <vector>

namespace sorrelin::tool {

// kNone leaves names in the order given, and those within a directory by name.
enum class Sort { kNone, kName, kNatural };

struct Input {
  std::string name;
  std::string problem;     // why there is no file to open; otherwise empty
  std::string shown = {};  // in messages; empty: the name
};

// Replaces each directory by the pictures in it, and with `recursive` by those further down too:
// files whose name ends as a picture's does, whether or not its format is read here, or whose first
// bytes are a picture's. Dangling links and files that cannot be read are in the list with their
// problem. Other files are passed over, and appended to `ignored` unless that is null; hidden ones
// are left out. Then sorts the list.
std::vector<Input> ListInputs(std::vector<std::string> const& names, Sort sort,
                              bool recursive = false, std::vector<std::string>* ignored = nullptr);

// Whether `a` comes before `b` where runs of digits count as numbers and upper case as lower:
// "Page 2" before "page 10".
bool NaturalLess(std::string_view a, std::string_view b);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_INPUT_LIST_H_

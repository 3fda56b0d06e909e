// The files that a command line means: names as they are, and what lies in directories.
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
  std::string problem;  // of a directory that gives nothing; otherwise empty
};

// Replaces each directory by the pictures that lie in it, without those further down: files whose
// name ends as a picture's does, or whose first bytes are a picture's. Hidden files are left out.
// Then sorts all of them.
std::vector<Input> ListInputs(std::vector<std::string> const& names, Sort sort);

// Whether `a` stands before `b` where runs of digits count as numbers and upper case as lower:
// "Page 2" before "page 10".
bool NaturalLess(std::string_view a, std::string_view b);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_INPUT_LIST_H_

// Lines on standard error.
#include "tools/cli/messages.h"

#include <algorithm>
#include <cstdio>

namespace sorrelin::tool {

void PrintProblem(std::string const& name, std::string const& problem) {
  PrintNote(name + ": " + problem);
}

void PrintNote(std::string const& text) {
  std::string line = "sorrelin: " + text;
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace sorrelin::tool

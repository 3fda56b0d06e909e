// Lines on standard error.
#include "tools/cli/messages.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace sorrelin::tool {
namespace {

int output_error = 0;  // of the system, the first

}  // namespace

void FlushOutput() {
  errno = 0;
  if (std::fflush(stdout) != 0 && output_error == 0) output_error = errno;
}

bool IsOutputWhole() {
  int const before = errno;
  FlushOutput();
  if (std::ferror(stdout) == 0) return true;
  int const error = output_error != 0 ? output_error : before;
  if (error == EPIPE) return false;
  PrintProblem("standard output",
               "cannot be written: " + std::generic_category().message(error) + kRoomRemedy);
  return false;
}

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

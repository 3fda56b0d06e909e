// Lines on standard error.
#include "tools/cli/messages.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

int output_error = 0;  // of the system, the first
std::atomic<bool> are_silent = false;

}  // namespace

// A stream without a buffer has failed before it is flushed.
void FlushOutput() {
  int error = WriteErrorOfStream();
  if (std::fflush(stdout) != 0) error = WriteErrorOfStream();
  if (std::ferror(stdout) != 0 && output_error == 0) output_error = error;
}

bool IsOutputWhole() {
  FlushOutput();
  if (std::ferror(stdout) == 0) return true;
  if (output_error == EPIPE) return false;
  PrintProblem("standard output",
               "cannot be written: " + std::generic_category().message(output_error) + kRoomRemedy);
  return false;
}

void PrintProblem(std::string const& name, std::string const& problem) {
  PrintNote(name + ": " + problem);
}

void SilenceMessages() { are_silent = true; }

void PrintNote(std::string const& text) {
  if (are_silent) return;
  std::string line = "sorrelin: " + text;
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  std::fprintf(stderr, "%s\n", line.c_str());
  std::fflush(stderr);
}

}  // namespace sorrelin::tool

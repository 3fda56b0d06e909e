// One write for each message, so that lines of several programs do not mix.
#include "tools/printer/job_messages.h"

#include <cstdio>

namespace sorrelin::tool {
namespace {

constexpr char kFirstPrintable = ' ', kDelete = 0x7F;

}  // namespace

std::string OneLine(std::string_view text) {
  std::string line(text);
  for (char& c : line) {
    if ((c >= 0 && c < kFirstPrintable) || c == kDelete) c = '?';
  }
  return line;
}

void SayToScheduler(char const* level, std::string const& text) {
  std::string const line = std::string(level) + ": " + OneLine(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace sorrelin::tool

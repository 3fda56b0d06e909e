// Messages of filters and backends to the printing system, on standard error.
#ifndef TOOLS_PRINTER_JOB_MESSAGES_H_
#define TOOLS_PRINTER_JOB_MESSAGES_H_

#include <string>
#include <string_view>

namespace sorrelin::tool {

// Text with control characters as question marks: a message is one line, whatever a title holds.
std::string OneLine(std::string_view text);

// Prints "LEVEL: text" as one line; levels are those of CUPS, such as ERROR, INFO and PAGE.
void SayToScheduler(char const* level, std::string const& text);

}  // namespace sorrelin::tool

#endif  // TOOLS_PRINTER_JOB_MESSAGES_H_

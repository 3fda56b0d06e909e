// Names and texts between the command line (UTF-8) and the library (UTF-16).
#ifndef TOOLS_CLI_TEXT_H_
#define TOOLS_CLI_TEXT_H_

#include <optional>
#include <string>

namespace sorrelin::tool {

// UTF-16 of a text, or nullopt if it is not UTF-8.
std::optional<std::u16string> Utf16(std::string const& text);

// UTF-8 of a text that Utf16 made.
std::string Utf8(std::u16string const& text);

// What the system says of this thread's last error.
std::string LastSystemError();

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_TEXT_H_

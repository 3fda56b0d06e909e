// Names and texts between the command line (UTF-8), the library (UTF-16) and the system.
#ifndef TOOLS_CLI_TEXT_H_
#define TOOLS_CLI_TEXT_H_

#include <sorrelin/platform/types.h>

#include <filesystem>
#include <optional>
#include <string>

namespace sorrelin::tool {

// A text in the units of the library.
using WideText = std::basic_string<WCHAR>;

// UTF-16 of a text, or nullopt if it is not UTF-8.
std::optional<WideText> Utf16(std::string const& text);

// UTF-8 of a text that Utf16 made.
std::string Utf8(WideText const& text);

// The file of a name that the command line has. The constructor of paths takes names in a code page
// that is not UTF-8 everywhere. path.string() is the way back.
std::filesystem::path PathOf(std::string const& name);

// A path in the units of the library.
WideText WideName(std::filesystem::path const& path);

// A message of the system without the period and the line break that some systems end it with.
std::string WithoutLineEnd(std::string message);

// What the system says of this thread's last error.
std::string LastSystemError();

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_TEXT_H_

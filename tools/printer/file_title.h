// Names of files made of a job's title, which anyone can choose.
#ifndef TOOLS_PRINTER_FILE_TITLE_H_
#define TOOLS_PRINTER_FILE_TITLE_H_

#include <string>
#include <string_view>

namespace sorrelin::tool {

// The title as one component of a path, of at most 240 bytes of UTF-8: control characters, slashes
// and bytes that are no UTF-8 become underscores, dots and blanks at either end and a final ".pdf"
// go, and `fallback` stands for a title of which nothing is left.
std::string FileTitle(std::string_view title, std::string_view fallback);

// "title.pdf" for the number 1, then "title (2).pdf"; at most 255 bytes for numbers up to 9999.
std::string NumberedName(std::string const& file_title, int number);

}  // namespace sorrelin::tool

#endif  // TOOLS_PRINTER_FILE_TITLE_H_

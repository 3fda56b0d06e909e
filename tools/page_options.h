// The part of the command line that the verbs share which make pages of pictures.
#ifndef TOOLS_PAGE_OPTIONS_H_
#define TOOLS_PAGE_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/document.h"

namespace sorrelin::tool {

struct PageOptions {
  std::string output;
  std::vector<std::string> images;
  PageStyle style;
  bool recode = false;  // decode what could go in as it is
  bool quiet = false;
};

// Adds the document, called `name` in the help, and the images.
void AddFiles(CLI::App& verb, PageOptions& options, std::string const& name,
              std::string const& help);

// Adds how pages are made: --dpi, --compression, --quality, --recode.
void AddPageStyle(CLI::App& verb, PageOptions& options);

void AddQuiet(CLI::App& verb, PageOptions& options);

// Leaves as CLI::ValidationError if files are named that do not go together. `name` is that of the
// document in the help.
void CheckFiles(PageOptions const& options, std::string const& name);

// What the help says of pictures and of the option --compression.
inline constexpr char kPicturesHelp[] =
    R"(Every file that holds a picture will do: BMP, GIF, JPEG, JPEG 2000, PNG, PNM,
TIFF with any number of pages, WebP. - is standard input. Pages keep the
resolution of their picture; without one it is 96 dots per inch.

Compression "auto" is Group 4 for black and white and Flate for everything
else, so that nothing is lost. JPEG files, and Group 4 TIFF pages of one strip,
go into the document as they are; if they must be decoded (because of --recode,
or because they lie on their side), JPEG files are coded as JPEG again.
)";

}  // namespace sorrelin::tool

#endif  // TOOLS_PAGE_OPTIONS_H_

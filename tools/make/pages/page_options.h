// Command-line options shared by make and append.
#ifndef TOOLS_MAKE_PAGES_PAGE_OPTIONS_H_
#define TOOLS_MAKE_PAGES_PAGE_OPTIONS_H_

#include <string>
#include <vector>

#include "tools/cli/command_line.h"
#include "tools/cli/jobs.h"
#include "tools/make/input_list.h"
#include "tools/make/pages/page_style.h"
#include "tools/ocr/ocr_options.h"

namespace sorrelin::tool {

// The name of a document that goes to standard output.
inline constexpr char kStandardOutput[] = "-";

struct PageOptions {
  std::string output;
  std::vector<std::string> images;  // as they are typed
  Sort sort = Sort::kNone;
  bool recursive = false;            // directories stand for what is further down too
  std::vector<Input> inputs;         // the files that they stand for, in order
  std::vector<std::string> ignored;  // files of directories that are no pictures
  PageStyle style;
  OcrOptions ocr;
  int jobs = 1;
  bool quiet = false;
  bool verbose = false;
  bool json = false;  // a report goes to standard output
};

// Adds the document, called `name` in the help, and the images.
void AddFiles(Verb& verb, PageOptions& options, std::string const& name, std::string const& help);

// Adds how pages are made: resolution, size, compression.
void AddPageStyle(Verb& verb, PageOptions& options);

// Adds what the run prints: --json, --verbose, --quiet.
void AddReports(Verb& verb, PageOptions& options);

// Adds how the run goes: --recursive, --sort, --jobs, and what AddReports adds.
void AddRun(Verb& verb, PageOptions& options);

// Adds --jobs, for verbs with work for several processors.
void AddJobs(Verb& verb, int& jobs);

// Finds the files that the images stand for. Throws UsageError if the named files conflict. `name`
// is that of the document in the help.
void ListFiles(PageOptions& options, std::string const& name);

// What the help says of pictures and of the options above.
inline constexpr char kPicturesHelp[] =
    R"(Every file that holds a picture will do: BMP, GIF, JPEG, JPEG 2000, PNG, PNM,
TIFF with any number of pages, WebP, and the print rasters of CUPS, PWG and
Apple. A directory stands for the pictures in it, by name, and with --recursive
for those further down too. - is standard input. Pages keep the resolution of
their picture; without one it is 96 dots per inch.

The order is that of the command line unless --sort says otherwise: "name" goes
by bytes, and in "natural" page2 comes before page10. Any number of --jobs makes
the same document.

What a picture file holds goes into the document as it is coded, where PDF can
hold that coding: JPEG, JPEG 2000, PNG without interlace and transparency, and
TIFF pages of JPEG data or of one Group 4 strip. Colour profiles stay, and a
page turns a picture that its file says lies on its side. All else is coded
without loss, with all its bits: compression "auto" is the smaller of Group 4
and Flate for black and white, and Flate otherwise. JPEG data that PDF cannot
hold are coded as JPEG again.

With --plain, pages have the forms that the library reads back: 1, 8 or 24 bits
in grey, a palette or RGB, without prediction, profiles, inks and JPEG 2000.

With --page all pages have one size, and the picture stands in the middle:
"within" makes it as large as goes, "shrink" keeps its own size if that goes,
"fill" covers the page and cuts off the rest, "stretch" changes its shape. A
page size with a name lies on its side for a wide picture.

What was changed of the pictures is printed at the end, a line for each kind of
change. A damaged picture is named and left out; --keep-damaged makes a page of
what could be read of it, and names it too.

The report of --json has the keys document, written, pages and bytes; problem,
an array of objects with the keys file, page and problem; page, an array of
objects with the keys number, file, page, coding, data ("passed" as it is, or
"coded"), bytes, changes, dpi_x, dpi_y, dpi_from ("file", "option" or "default")
and damage; and ignored, an array of names. The order is always this one.
)";

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_OPTIONS_H_

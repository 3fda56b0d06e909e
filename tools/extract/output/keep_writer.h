// Pictures as files whose data are those of the document.
#ifndef TOOLS_EXTRACT_OUTPUT_KEEP_WRITER_H_
#define TOOLS_EXTRACT_OUTPUT_KEEP_WRITER_H_

#include <string>

#include "tools/extract/output/byte_output.h"
#include "tools/extract/page/page_judge.h"

namespace sorrelin::tool {

enum class KeptAs { kNothing, kJpeg, kJpx, kFax, kJbig2, kPng };

// The kind of file that shows the picture, in this orientation, with its data as they are.
KeptAs KeptAsOf(PagePicture const& picture, Orientation orientation);

// The usual extension, with its point; of kNothing, that of PNG.
char const* ExtensionOf(KeptAs kept);

// Writes such a file, which must not be kNothing. The data are read to their end first: false with
// the reason in `problem` if they are damaged, and with an empty one if writing fails.
bool WriteKept(PagePicture const& picture, KeptAs kept, Orientation orientation, ByteOutput& output,
               std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_KEEP_WRITER_H_

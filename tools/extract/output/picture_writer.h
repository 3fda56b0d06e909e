// Picture files, written row by row.
#ifndef TOOLS_EXTRACT_OUTPUT_PICTURE_WRITER_H_
#define TOOLS_EXTRACT_OUTPUT_PICTURE_WRITER_H_

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

#include "tools/extract/output/byte_output.h"
#include "tools/extract/page/picture_form.h"

namespace sorrelin::tool {

// kKeep: as the document stores the picture, as far as there are files of that kind.
enum class FileFormat { kKeep, kPng, kTiff, kBmp, kPnm, kJpeg };

// By the name that the command line has for it.
std::optional<FileFormat> FormatOfName(std::string_view name);
// By a file's name; nullopt if its extension is of no format that is written.
std::optional<FileFormat> FormatOfFile(std::filesystem::path const& path);
// The usual extension, with its point; that of PNG for kKeep.
char const* ExtensionOf(FileFormat format);

class PictureWriter : public PictureSink {
 public:
  // Ends the file after the last row. False if it could not be written, or rows are missing.
  virtual bool Finish() = 0;
};

// Writes a file of one picture, which begins with Begin. Begin is false for a picture that does not
// fit the format. What the format does not have is changed before: palettes become colours, depths
// of 16 bits become 8, and what is transparent is laid on white.
std::unique_ptr<PictureWriter> MakeWriter(FileFormat format, ByteOutput& output);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_OUTPUT_PICTURE_WRITER_H_

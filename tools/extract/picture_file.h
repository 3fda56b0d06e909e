// Pictures on their way out: from rows of pixels to Leptonica's form and into files.
#ifndef TOOLS_EXTRACT_PICTURE_FILE_H_
#define TOOLS_EXTRACT_PICTURE_FILE_H_

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/extract/page_picture.h"
#include "tools/formats/picture.h"
#include "tools/formats/tiff_file.h"

namespace sorrelin::tool {

enum class FileFormat { kPng, kTiff, kBmp, kPnm, kJpeg };

// By the name that the command line has for it.
std::optional<FileFormat> FormatOfName(std::string_view name);
// By a file's name; nothing if its extension says nothing.
std::optional<FileFormat> FormatOfFile(std::filesystem::path const& path);
// The usual extension, with its point.
char const* ExtensionOf(FileFormat format);

// Builds a picture of the rows that it is given.
class PictureBuilder : public PictureSink {
 public:
  // False if the picture is too large.
  bool Begin(PictureForm const& form) override;
  bool Row(std::span<BYTE const> row) override;

  // Null if there is none, or not all of its rows have come.
  PixPtr Take();

 private:
  PixPtr pix_;
  int row_ = 0;
};

// Writes a file of one picture. False with the reason in `problem`.
bool WritePicture(std::filesystem::path const& path, Pix* pix, FileFormat format,
                  std::string& problem);

// Writes a file of these bytes. False with the reason in `problem`.
bool WriteBytes(std::filesystem::path const& path, std::span<BYTE const> bytes,
                std::string& problem);

// Adds a picture to a TIFF file as its next page. False with the reason in `problem`.
bool AddTiffPage(TiffFile& file, Pix* pix, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PICTURE_FILE_H_

// A picture file or stream, taken apart into its pictures.
#ifndef TOOLS_FORMATS_IMAGE_FILE_H_
#define TOOLS_FORMATS_IMAGE_FILE_H_

#include <memory>
#include <string>

#include "tools/formats/byte_stream.h"
#include "tools/formats/image_source.h"
#include "tools/formats/raster/raster_stream.h"

namespace sorrelin::tool {

// PNM, PNG and JPEG pictures may follow each other, and print rasters have pages; one of them is in
// memory at a time. A file of any other format is one source.
class ImageFile {
 public:
  // Opens a file by name, or standard input. nullptr with the reason in `problem`.
  static std::unique_ptr<ImageFile> Open(std::string const& name, std::string& problem);

  // The next source of pages. nullptr at the end: with a reason in `problem` if there was no
  // picture, or what follows the last one is none; otherwise `problem` is empty.
  std::unique_ptr<ImageSource> Next(std::string& problem);

  // Whether the last source was all that the file holds.
  bool AtEnd();

 private:
  ImageFile(std::string name, std::unique_ptr<ByteStream> stream)
      : name_(std::move(name)), stream_(std::move(stream)) {}

  std::unique_ptr<ImageSource> TakeSource(std::string& problem);
  std::unique_ptr<ImageSource> TakeTiff(std::string& problem);
  std::unique_ptr<ImageSource> TakePng(std::string& problem);
  std::unique_ptr<ImageSource> TakeJpeg(std::string& problem);
  std::unique_ptr<ImageSource> TakeRaster(RasterKind const& kind, std::string& problem);
  void SkipPadding();

  std::string name_;
  std::unique_ptr<ByteStream> stream_;
  std::unique_ptr<RasterStream> raster_;  // the pages of a print raster
  bool begun_ = false;
  bool ended_ = false;
};

// Whether a file can be read and its first bytes are those of a picture.
bool StartsAsPicture(std::string const& name);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_IMAGE_FILE_H_

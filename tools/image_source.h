// Picture files as sequences of pages: any file that the image library reads, or standard input.
#ifndef TOOLS_IMAGE_SOURCE_H_
#define TOOLS_IMAGE_SOURCE_H_

#include <memory>
#include <optional>
#include <string>

#include "tools/picture.h"
#include "tools/stored_image.h"

namespace sorrelin::tool {

// The name that stands for standard input.
inline constexpr char kStandardInput[] = "-";

// Keeps at most one page in memory besides the bytes of the file; of a TIFF file on disk, no bytes.
class ImageSource {
 public:
  virtual ~ImageSource() = default;

  // Pages that can be reached, at least 1.
  virtual int PageCount() const = 0;

  // What is wrong with the file as a whole, beyond its reachable pages; empty if nothing is.
  virtual std::string Damage() const { return {}; }

  // The page's coded bytes, if any reader of documents understands them as they are. They stand
  // until the next call. Pages are counted from 0.
  virtual std::optional<StoredImage> Stored(int page) = 0;

  // The page decoded. Nothing if it is damaged or too large.
  virtual std::optional<Picture> Decode(int page) = 0;
};

// Opens a file by name. Null, with the reason in `problem`, if it cannot be read or holds no
// picture.
std::unique_ptr<ImageSource> OpenImage(std::string const& name, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_IMAGE_SOURCE_H_

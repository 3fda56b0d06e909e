// Picture files as sequences of pages: any file that the image library reads, or standard input.
#ifndef TOOLS_FORMATS_IMAGE_SOURCE_H_
#define TOOLS_FORMATS_IMAGE_SOURCE_H_

#include <memory>
#include <optional>
#include <string>

#include "tools/formats/picture.h"
#include "tools/formats/stored_image.h"

namespace sorrelin::tool {

// The name that stands for standard input.
inline constexpr char kStandardInput[] = "-";

// What is said of a page that gives no picture, and of one that takes more memory than there is.
inline constexpr char kCannotDecode[] =
    "cannot be decoded: it is damaged, too large, or of a kind that is not read "
    "(save it anew as PNG or TIFF)";
inline constexpr char kMemoryText[] = "is too large for the memory there is (close other programs)";

// The message about a damaged picture.
std::string DamageText(std::string const& damage);

// Keeps the bytes of the file in memory; of a TIFF file on disk, none. Several threads may ask for
// pages at once.
class ImageSource {
 public:
  virtual ~ImageSource() = default;

  // Pages that can be reached, at least 1.
  virtual int PageCount() const = 0;

  // What is wrong with the file as a whole, beyond its reachable pages; empty if nothing is.
  virtual std::string Damage() const { return {}; }

  // The page's coded bytes, if any reader of documents understands them as they are and they are
  // whole. Pages are counted from 0.
  virtual std::optional<StoredImage> Stored(int page) = 0;

  // The page decoded: of a damaged one what could be read, and the damage. Nothing, with the reason
  // in `problem`, if there is no picture to be had.
  virtual std::optional<Picture> Decode(int page, std::string& problem) = 0;
};

// Opens a file by name. Null, with the reason in `problem`, if it cannot be read or holds no
// picture.
std::unique_ptr<ImageSource> OpenImage(std::string const& name, std::string& problem);

// Whether a file can be read and its first bytes are those of a picture.
bool StartsAsPicture(std::string const& name);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_IMAGE_SOURCE_H_

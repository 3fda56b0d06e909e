// A source of pages: a picture file, or one of the pictures of a stream.
#ifndef TOOLS_FORMATS_IMAGE_SOURCE_H_
#define TOOLS_FORMATS_IMAGE_SOURCE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/formats/picture/picture.h"
#include "tools/formats/picture/stored_image.h"

namespace sorrelin::tool {

// What is said of a page that gives no picture, and of one that takes more memory than there is.
inline constexpr char kCannotDecode[] =
    "cannot be decoded: it is of a kind that is not read (save it anew as PNG or TIFF)";
inline constexpr char kLeftOver[] =
    "goes on after its last picture with bytes that are no picture (save it again, or cut them "
    "off)";
inline constexpr char kMemoryText[] = "is too large for the memory there is (close other programs)";

inline constexpr char kGoesOn[] =
    "goes on after its end with other data (save it again, or cut them off)";

// The message about a damaged picture.
std::string DamageText(std::string const& damage);

// The message about a file of this format of which nothing can be decoded.
std::string DamagedHeader(char const* format);

// Keeps the bytes of the file in memory; of a TIFF file on disk, none. Several threads may ask for
// pages at once.
class ImageSource {
 public:
  virtual ~ImageSource() = default;

  // Pages that can be reached, at least 1.
  virtual int PageCount() const = 0;

  // Changes that concern the source as a whole; the report has them for its first page.
  Changes const& changes() const { return changes_; }
  void AddChange(Change change) { changes_.Add(change); }

  // What is wrong with the file as a whole, beyond its reachable pages; empty if nothing is.
  virtual std::string Damage() const { return {}; }

  // The page's coded bytes, if any reader of documents understands them as they are and they are
  // whole. Pages are counted from 0.
  virtual std::optional<StoredImage> Stored(int page) = 0;

  // The page decoded: of a damaged one what could be read, and the damage. Nothing, with the reason
  // in `problem`, if there is no picture to be had.
  virtual std::optional<Picture> Decode(int page, std::string& problem) = 0;

 private:
  Changes changes_;
};

// Bytes that are enough to recognise any format; the image library looks at as many, whatever there
// is.
inline constexpr size_t kFormatBytes = 12;

// Whether a file that starts so is a picture of a known format other than PNM.
bool IsPicture(std::span<BYTE const> start);

// The pages of a whole file in memory, TIFF apart. nullptr, with the reason in `problem`, if it is
// no picture.
std::unique_ptr<ImageSource> SourceOfBytes(std::vector<BYTE> bytes, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_IMAGE_SOURCE_H_

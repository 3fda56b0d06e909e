// A coded picture that goes into a document as it is, without being decoded: nothing is lost and
// nothing is computed.
#ifndef TOOLS_FORMATS_PICTURE_STORED_IMAGE_H_
#define TOOLS_FORMATS_PICTURE_STORED_IMAGE_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/writer/image_form.h>

#include <memory>
#include <optional>
#include <span>

#include "tools/formats/page_frame.h"
#include "tools/formats/picture/changes.h"
#include "tools/formats/picture/icc_profile.h"
#include "tools/formats/picture/resolution.h"

namespace sorrelin::tool {

struct StoredImage {
  std::span<BYTE const> bytes;        // as long as `owner` exists
  std::shared_ptr<void const> owner;  // may be null where the caller keeps the bytes
  int width = 0;                      // pixels, as stored
  int height = 0;                     // rows, as stored
  ImageForm form;
  ProfileBytes profile;  // null: none
  int orientation = 1;   // as in EXIF and TIFF: how the stored picture is to be turned
  Resolution dpi;        // as stored
  Changes changes = {};  // beside the resolution that a file lacks
  std::optional<PageFrame> frame = {};  // of a picture that does not fill its page
};

// Whether the orientation exchanges rows and columns.
constexpr bool LiesOnItsSide(int orientation) { return orientation >= 5; }

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_STORED_IMAGE_H_

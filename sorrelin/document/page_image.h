// The image of a page: the way from the page object to its image object, and the stream's bytes.
#ifndef SORRELIN_DOCUMENT_PAGE_IMAGE_H_
#define SORRELIN_DOCUMENT_PAGE_IMAGE_H_

#include <sorrelin/platform/block.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <optional>

namespace sorrelin {

class ObjectLoader;
class PageList;

struct PageImage {
  // Pixels per metre of a picture that fills the media box; nothing for an empty box.
  struct Resolution {
    LONG x;
    LONG y;
  };

  DWORD width = 0;          // pixels
  DWORD height = 0;         // rows
  DWORD bits = 0;           // per component
  DWORD kind = 0;           // 0: the image object was not read
  DWORD compression = 0;    // PDF_COMPRESSION_FLAG_*, any number of them
  bool flipped = false;     // the page shows it upside down
  bool black_is_1 = false;  // what the decoders of 1-bit images go by
  bool decode_normal = true;
  std::optional<Resolution> resolution;
  OwnedBlock palette;
  OwnedBlock data;
};

// Reads the image of page `page`, counted from 0. After a failure `image` holds what was read until
// then. Code 31 for a page that there is not, 24 for an image without a stream.
Status ReadPageImage(ObjectLoader& objects, PageList const& pages, DWORD page, PageImage& image);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_PAGE_IMAGE_H_

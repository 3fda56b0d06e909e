// The image XObject (ISO 32000-1, 8.9.5) and the parameters of its filter.
#ifndef SORRELIN_WRITER_IMAGE_OBJECT_H_
#define SORRELIN_WRITER_IMAGE_OBJECT_H_

#include <sorrelin/platform/image_records.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <optional>

namespace sorrelin {

class ObjectWriter;

// Fills the record as it is given. Error 16, with the record untouched, for negative columns, rows
// or damaged rows.
Status FillCcittParams(_CCITT_FILTER_PARAMS& record, _CCITT_FILTER_PARAMS const& values);

// What an image object holds.
struct ImageObject {
  _IMAGE_PARAMETERS const& params;
  _FILTER const& filter;
  BYTE const* data;  // `size` coded bytes
  DWORD size;        // bytes
  // 8 bits: the block of the palette object, which follows the image and its length object. Without
  // it the caller writes that object.
  std::optional<HGLOBAL> palette = std::nullopt;
};

// Writes the image, its length object and the palette's. The image's number, or 0: error 15 for a
// compression without a filter, none without data.
Result<DWORD> WriteImage(ObjectWriter& out, ImageObject const& image);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_IMAGE_OBJECT_H_

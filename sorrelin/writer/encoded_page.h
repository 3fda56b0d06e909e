// A page from a picture that is coded already: the end of the bitmap pipeline, and how a coded
// image goes into a document as it is. Not exported from the shared library.
#ifndef SORRELIN_WRITER_ENCODED_PAGE_H_
#define SORRELIN_WRITER_ENCODED_PAGE_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/writer/image_form.h>

#include <cstdint>
#include <optional>

class CCreatePDF;

namespace sorrelin {

// A page of another size than its picture, or a picture that is turned, and where the picture is on
// the page: its lower left corner and its sides, in fractions of a point.
struct PagePlacement {
  static constexpr int64_t kUnitsPerPoint = 10000;  // the fractions

  POINT page = {0, 0};  // points
  int64_t x = 0;        // of the corner, from the left
  int64_t y = 0;        // of the corner, from below
  int64_t width = 0;    // of the picture
  int64_t height = 0;   // of the picture
  int orientation =
      1;  // of the rows as coded, as in EXIF: 1 to 8; corner and sides are the shown ones
};

// The coded bytes, and what the image dictionary says of them. Rows run from the top.
struct EncodedPage {
  int32_t width = 0;           // pixels
  int32_t height = 0;          // rows
  int32_t bits_per_pixel = 0;  // 1, 8 or 24
  DWORD compression = 0;       // PDF_COMPRESSION_*; CCITT data are Group 4
  bool decode_normal = true;   // 1 bit: /Decode [0 1], where CCITT data show a black run as black
  POINT dpi = {0, 0};          // dots per inch, neither of them 0
  BYTE const* data = nullptr;  // `size` stream bytes, the caller's
  DWORD size = 0;              // bytes
  HGLOBAL palette = nullptr;   // 8 bits: a block of red, green, blue triples, the caller's
  std::optional<PagePlacement> placement;  // otherwise the picture fills a page of its size
  // In place of bits_per_pixel, compression, decode_normal and palette; the caller's.
  ImageForm const* form = nullptr;
  // The colours of the image, or null; the caller's. Writing the page may number it.
  ColourProfile* profile = nullptr;
};

// Adds the page to the session's document: false after a failure, with the session's error code.
// A picture that would be less than half a point wide or high is written without a page, and that
// is no failure.
bool WriteEncodedPage(CCreatePDF& session, EncodedPage const& page);

}  // namespace sorrelin

#endif  // SORRELIN_WRITER_ENCODED_PAGE_H_

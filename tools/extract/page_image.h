// What a page's picture is, judged from its objects: how it can be read rightly, or why it cannot.
// The library looks at no more than the pictures it writes need, and rebuilds some others wrongly.
#ifndef TOOLS_EXTRACT_PAGE_IMAGE_H_
#define TOOLS_EXTRACT_PAGE_IMAGE_H_

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/documents/colour_space.h"
#include "tools/documents/pdf_objects.h"
#include "tools/formats/resolution.h"

namespace sorrelin::tool {

enum class ImageCoding { kNone, kFlate, kRunLength, kGroup4, kJpeg };

struct PageImage {
  DWORD width = 0;   // pixels
  DWORD height = 0;  // rows
  int bits = 0;      // of a sample: 1, 2, 4 or 8
  ColourSpace space;
  // What each value of a single component's sample looks like; empty for three components.
  std::vector<RGBQUAD> colours;
  ImageCoding coding = ImageCoding::kNone;
  bool black_is_1 = false;  // Group 4
  bool predicted = false;   // Flate: each row stands behind a tag of PNG
  bool flipped = false;     // the page shows the first row at the bottom
  std::span<BYTE const> data;

  int BitsPerPixel() const { return bits * space.components; }
  size_t RowBytes() const {
    return (static_cast<size_t>(width) * static_cast<size_t>(BitsPerPixel()) + 7) / 8;
  }

  // With the tag.
  size_t StoredRowBytes() const { return RowBytes() + (predicted ? 1 : 0); }

  PdfObject object;  // what `data` is of
};

struct PageFacts {
  double width = 612;  // points
  double height = 792;
  // Degrees, clockwise, by which viewers turn the page: 0, 90, 180 or 270. Size and picture are as
  // stored.
  int rotation = 0;
  // Of the picture, as far as they are known: 0 and empty otherwise.
  DWORD pixel_width = 0;
  DWORD pixel_height = 0;
  int depth = 0;                   // bits per pixel, as stored
  std::string compression;         // as the option of make has it, or the filters' names
  Resolution dpi;                  // as the picture stands on the page
  std::string problem;             // why the picture cannot be read; empty if it can
  std::optional<PageImage> image;  // unless there is a problem
};

// Judges the pages of one document. What a page inherits is read once for all of them, and the work
// has a bound: pages may share what is large.
class PageJudge {
 public:
  // The session outlives this object. `most_work` is in bytes that are read or inflated.
  PageJudge(CCreatePDF& session, uint64_t most_work) : objects_(session, most_work) {}

  // Judges the page whose object this is. Decodes nothing but small parts.
  PageFacts Judge(DWORD number);

 private:
  PdfValue const& Ancestor(PdfValue const& reference);
  PdfValue Inherited(PdfValue const& page, char const* key);
  void ReadBox(PdfValue const& page, PageFacts& facts);
  void ReadRotation(PdfValue const& page, PageFacts& facts);

  PdfObjects objects_;
  std::map<DWORD, PdfValue> ancestors_;  // by their numbers, without their kids
};

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_IMAGE_H_

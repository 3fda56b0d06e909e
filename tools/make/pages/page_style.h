// The style of the pages, as the command line sets it.
#ifndef TOOLS_MAKE_PAGES_PAGE_STYLE_H_
#define TOOLS_MAKE_PAGES_PAGE_STYLE_H_

#include <optional>

#include "tools/formats/picture/resolution.h"
#include "tools/make/pages/page_layout.h"
#include "tools/make/pages/scan_cleaning.h"

namespace sorrelin::tool {

enum class Compression { kAuto, kGroup4, kFlate, kRunLength, kJpeg, kNone };

// Bitmaps and pictures without a resolution are taken to have this one.
inline constexpr int kUsualDotsPerInch = 96;

struct PageStyle {
  Compression compression = Compression::kAuto;
  int quality = 0;                // of JPEG, 1 to 100; 0: the coder's usual one
  bool plain = false;             // only forms that the library reads back
  bool keep_damaged = false;      // what could be read of damaged pictures becomes a page
  std::optional<Resolution> dpi;  // in place of the picture's own
  Resolution default_dpi = {kUsualDotsPerInch, kUsualDotsPerInch};  // where a picture has none
  std::optional<Paper> paper;  // otherwise each page is as large as its picture
  Fit fit = Fit::kWithin;
  ScanStyle scan;
  double border = 0;  // points around the picture
  int rotate = 0;     // degrees clockwise, beyond what the file asks for: 0, 90, 180 or 270
};

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_PAGES_PAGE_STYLE_H_

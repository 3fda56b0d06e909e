// What a page holds: the pictures that it draws, and whether it consists of one.
#ifndef TOOLS_EXTRACT_PAGE_PAGE_JUDGE_H_
#define TOOLS_EXTRACT_PAGE_PAGE_JUDGE_H_

#include <string>
#include <vector>

#include "tools/documents/qpdf_document.h"
#include "tools/extract/codings/picture_shape.h"
#include "tools/extract/page/content_scanner.h"
#include "tools/extract/page/picture_form.h"

namespace sorrelin::tool {

// A picture as it is placed on its page. A picture in strips is several of them, from the top.
struct PagePicture {
  std::vector<PictureShape> strips;  // one, unless the picture was cut
  Orientation orientation = kUpright;
  Resolution dpi;  // as stored: across is along the rows
  std::string compression;
  std::string problem;  // why it cannot be read; empty if it can

  DWORD Width() const { return strips.empty() ? 0 : strips[0].width; }
  DWORD Height() const;
  // Bits per pixel as stored, 0 if they are not known.
  int Depth() const;
};

struct PageFacts {
  double width = 612;  // points
  double height = 792;
  // Degrees, clockwise, by which viewers turn the page: 0, 90, 180 or 270.
  int rotation = 0;
  std::vector<PagePicture> pictures;  // all that the page draws, each once
  // The one that the page consists of; empty if there is a problem with the page.
  std::vector<PagePicture> whole;
  std::string problem;  // why the page is not read as one picture; empty if it is
};

// Judges a page, which counts from 0. Decodes nothing but small parts.
PageFacts JudgePage(QpdfDocument& document, DWORD page);

// Decodes a picture in the orientation that `orientation` brings upright. False with the reason in
// `problem`.
bool DecodePagePicture(PagePicture const& picture, Orientation orientation, PictureSink& sink,
                       std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_PAGE_JUDGE_H_

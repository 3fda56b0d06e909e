// The pictures that a page draws, with the matrix of each.
#ifndef TOOLS_EXTRACT_PAGE_CONTENT_SCANNER_H_
#define TOOLS_EXTRACT_PAGE_CONTENT_SCANNER_H_

#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <vector>

#include "tools/documents/qpdf_document.h"
#include "tools/extract/page/placement.h"

namespace sorrelin::tool {

struct DrawnPicture {
  QPDFObjectHandle image;      // a stream; that of an inline picture has its keys in full
  QPDFObjectHandle resources;  // in which names of colour spaces are looked up
  Matrix matrix;               // from the unit square to the page, in points
  bool is_inline = false;
};

struct PageDrawing {
  std::vector<DrawnPicture> pictures;  // in the order of drawing; of very many, the first
  bool is_readable = true;             // otherwise part of the content could not be read
};

// Follows the content of a page and the forms that it draws: the matrix, its stack, and pictures.
// The work counts against the document's budget.
PageDrawing ScanPage(QpdfDocument& document, QPDFObjectHandle page);

}  // namespace sorrelin::tool

#endif  // TOOLS_EXTRACT_PAGE_CONTENT_SCANNER_H_

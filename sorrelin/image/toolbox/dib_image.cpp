// The life of a bitmap's wrapper; its drawing context is made and ended in a file per system.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/dib_image.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/units.h>

#include <utility>

namespace sorrelin {
namespace {

LONG DotsPerInch(LONG per_metre) {
  return static_cast<LONG>(per_metre / kInchesPerMetreOfReadBitmaps + 0.5);
}

}  // namespace

DibImage::DibImage(DibImage const& other) : hDIB(DuplicateBlock(other.hDIB)) {
  if (hDIB == nullptr) return;
  nWidth = other.nWidth;
  nHeight = other.nHeight;
  nDpiX = other.nDpiX;
  nDpiY = other.nDpiY;
  MeasureBlock();
}

DibImage::DibImage(LONG width, LONG height, int x_dpi, int y_dpi, int bits, bool white)
    : hDIB(CreateBlankDIB({width, height}, x_dpi, y_dpi, bits, white)) {
  if (hDIB == nullptr) return;
  nWidth = width;
  nHeight = height;
  nDpiX = x_dpi;
  nDpiY = y_dpi;
  MeasureBlock();
}

DibImage::DibImage(HDIB dib) : hDIB(dib) {
  DibView const view(dib);
  if (!view.IsLocked()) return;
  nWidth = view.header().biWidth;
  nHeight = view.header().biHeight;
  nDpiX = DotsPerInch(view.header().biXPelsPerMeter);
  nDpiY = DotsPerInch(view.header().biYPelsPerMeter);
  MeasureBlock();
}

DibImage::~DibImage() {
  ReleaseDrawingDC();
  GlobalFree(hDIB);
}

HDIB DibImage::Detach() {
  ReleaseDrawingDC();
  return std::exchange(hDIB, nullptr);
}

void DibImage::MeasureBlock() {
  DibView const view(hDIB);
  if (!view.IsLocked()) return;
  nByteSize = view.header().biSizeImage + static_cast<DWORD>(kDibHeaderBytes);
}

}  // namespace sorrelin

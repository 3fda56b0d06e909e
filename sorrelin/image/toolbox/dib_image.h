// A bitmap with its geometry, and with a drawing context where the system has them.
#ifndef SORRELIN_IMAGE_TOOLBOX_DIB_IMAGE_H_
#define SORRELIN_IMAGE_TOOLBOX_DIB_IMAGE_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

// Owns a bitmap's block; the other members stay 0 if the constructor has none.
class DibImage {
 public:
  // A copy of the block as it is; a drawing context stays with the other image.
  DibImage(DibImage const& other);
  // A blank bitmap; see CreateBlankDIB, which may refuse it.
  DibImage(LONG width, LONG height, int x_dpi, int y_dpi, int bits, bool white);
  // Takes a bitmap over.
  explicit DibImage(HDIB dib);
  ~DibImage();
  DibImage& operator=(DibImage const&) = delete;

  // Gives the bitmap to the caller, who frees it with GlobalFree.
  HDIB Detach();

  // A memory context (an HDC) on a white canvas of the bitmap's size, for 24 bits; the same one
  // until ReleaseDrawingDC, and the block is locked as long. Null for other depths, on failure, and
  // on systems without drawing contexts.
  HANDLE GetDrawingDC();
  // Copies what was drawn into the bitmap's rows and ends the context, if there is one.
  void ReleaseDrawingDC();

  HDIB hDIB = nullptr;
  HANDLE hDC = nullptr;
  BITMAPINFOHEADER* pHeader = nullptr;  // the locked block while a context exists
  HANDLE hSection = nullptr;
  HANDLE hOldObject = nullptr;  // what the context held before the section
  void* pSectionBits = nullptr;
  DWORD nByteSize = 0;  // of the picture and its header
  LONG nWidth = 0;      // pixels
  LONG nHeight = 0;
  LONG nDpiX = 0;
  LONG nDpiY = 0;

 private:
  // Takes the size in bytes from the block.
  void MeasureBlock();
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_TOOLBOX_DIB_IMAGE_H_

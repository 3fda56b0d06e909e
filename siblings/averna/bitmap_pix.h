// Packed bitmaps as the pictures that the engine reads.
#ifndef SIBLINGS_AVERNA_BITMAP_PIX_H_
#define SIBLINGS_AVERNA_BITMAP_PIX_H_

#include <allheaders.h>
#include <sorrelin/platform/types.h>

#include <memory>

namespace sorrelin::averna {

struct PixDeleter {
  void operator()(PIX* pix) const { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<PIX, PixDeleter>;

// The picture of a bitmap, top row first, with its resolution in dots per inch (0 where the bitmap
// has none): 1 bit with the darker colour set for 1-bit bitmaps, 8 bits grey for 8 bits with a grey
// table, 32 bits (red, green, blue) for other tables and 24 bits. Null for anything but an
// uncompressed bitmap of these depths whose rows are all in the block, and when memory is short.
PixPtr PixFromDib(HDIB dib);

}  // namespace sorrelin::averna

#endif  // SIBLINGS_AVERNA_BITMAP_PIX_H_

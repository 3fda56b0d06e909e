/* Around a block of C that starts from a bilevel bitmap. */
#include <sorrelin/platform/memory.h>
#include <string.h>

static HDIB MakeBitmap(void) {
  HDIB const block = GlobalAlloc(GHND, 48 + 28 * 100);
  BITMAPINFOHEADER const header = {.biSize = 40, .biWidth = 200, .biHeight = 100, .biPlanes = 1,
                                   .biBitCount = 1, .biXPelsPerMeter = 2835,
                                   .biYPelsPerMeter = 2835};
  BYTE* const bytes = GlobalLock(block);
  memcpy(bytes, &header, sizeof header);
  memset(bytes + 44, 255, 3);
  GlobalUnlock(block);
  return block;
}

int main(void) {
  HDIB const bitmap = MakeBitmap();
  /* BLOCK */
  GlobalFree(bitmap);
  return 0;
}

// Operations on packed bitmaps that the library keeps for its own use: blank bitmaps, copies,
// flips, quarter turns, and the search for content. No exported function reaches them.
//
// Handles that come back are new, unlocked blocks (flags 66) that the caller frees with GlobalFree;
// null means failure, which sets no session error. Bitmaps passed in stay as they are. Block order
// counts rows from the block's start, that is from the lowest for a positive height. May include:
// image/, platform/.
#ifndef SORRELIN_IMAGE_TOOLBOX_DIB_TOOLBOX_H_
#define SORRELIN_IMAGE_TOOLBOX_DIB_TOOLBOX_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <span>

namespace sorrelin {

// A bitmap of `size` pixels of 1, 8 or 24 bits with one colour all over. Resolutions are in dots
// per inch, 50 to 9999. Tables: black and white for 1 bit; white and 255 times black for 8 bits.
// Null for other depths and resolutions, a width below 1, and a picture or block past 32 bits of
// size.
HDIB CreateBlankDIB(POINT size, int x_dpi, int y_dpi, int bits, bool white);

// A copy of a block, of the same size.
HGLOBAL DuplicateBlock(HGLOBAL block);

// Colour table entries of a bitmap: the header's own number if it has 40 bytes and gives one,
// otherwise 2, 16, 256 or 0 for 1, 4, 8 or other bits.
DWORD GetColorCount(std::span<BYTE const> block);

// Bytes of the colour table: 4 an entry, 3 with a header of 12 bytes.
uint64_t GetPaletteSize(std::span<BYTE const> block);

// The rows: what follows header and colour table, through the end of the block.
std::span<BYTE> GetDIBBits(std::span<BYTE> block);

// A copy with its rows in reverse order, in a block of 4 bytes more. Null for a picture that would
// pass 4 GiB.
HDIB FlipDIBVertical(HDIB dib);

// A copy turned clockwise by a quarter, for 1, 4, 8, 15, 16, 24 and 32 bits, in a block with 4
// bytes after the picture. Null for other depths, a size without pixels, a negative height, a
// header of less than 40 bytes, and a picture or block past 4 GiB.
HDIB RotateDIB90(HDIB dib);

// Copies one pixel of 1, 4, 8, 15, 16, 24 or 32 bits, to and from the byte where it starts. The bit
// numbers give the pixel within that byte for 1 bit (0 is the highest bit) and the nibble for 4
// bits (0 is the high one, anything else the low one). Other depths copy nothing.
void CopyPixel(BYTE const* source, int source_bit, BYTE* target, int target_bit, int bits);

// Looks inward from each edge of a 24-bit bitmap for the first column or row with a hit and stores
// its distance from that edge in pixels, or -1. A pixel is a hit if the sum of its colours is above
// 3 * `threshold` (`bright`), or is not above it. 1; 0 for a handle or depth that is not served, a
// picture past 4 GiB and a null pointer, with nothing stored.
int FindContentBounds(HDIB dib, int threshold, bool bright, LONG* left, LONG* right, LONG* top,
                      LONG* bottom);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_TOOLBOX_DIB_TOOLBOX_H_

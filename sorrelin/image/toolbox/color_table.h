// Headers and colour tables of new bitmaps.
#ifndef SORRELIN_IMAGE_TOOLBOX_COLOR_TABLE_H_
#define SORRELIN_IMAGE_TOOLBOX_COLOR_TABLE_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

// Fills the header of an uncompressed bitmap. The depth is rounded up to 1, 4, 8 or 24 bits; below
// 24 bits the table has all colours of the depth. False, with the header untouched, for a size
// below 0 and for a picture that would pass 4 GiB.
bool InitBitmapInfoHeader(BITMAPINFOHEADER& header, LONG width, LONG height, int bits);

// An entry of a bitmap's colour table; what the block lacks reads as 0 and is not written.
RGBQUAD TableColor(std::span<BYTE const> block, DWORD index);
void SetTableColor(std::span<BYTE> block, DWORD index, RGBQUAD color);

// Writes the standard colours into the table of a bitmap's block, as many as the table has: black
// and white for 1 bit, the 16 colours of the display for 4 bits, index bits rrrgggbb for 8 bits.
// Bitmaps of other depths are left alone.
void SetDefaultColorTable(std::span<BYTE> block);

// A spread of 256 colours for bitmaps without a table: red counts in steps of 32, green of 32 where
// red starts again, blue of 64 where green does; the last one is white.
inline constexpr DWORD kSpreadColors = 256;
RGBQUAD SpreadColor(DWORD index);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_TOOLBOX_COLOR_TABLE_H_

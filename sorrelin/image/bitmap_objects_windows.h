// Bitmaps and palettes of the system, made from packed bitmaps and the other way round. Windows
// only, and for the library's own use: no exported function reaches them.
//
// Objects that come back are the caller's (DeleteObject), bitmaps are new blocks (GlobalFree); null
// means failure. May include: image/, platform/.
#ifndef SORRELIN_IMAGE_BITMAP_OBJECTS_WINDOWS_H_
#define SORRELIN_IMAGE_BITMAP_OBJECTS_WINDOWS_H_

#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

// A packed bitmap of 1, 4, 8 or 24 bits with the pixels of `bitmap`, which must not be selected
// into a context. Without a palette the screen's is used at depths above 1.
HDIB DIBFromBitmap(HBITMAP bitmap, HPALETTE palette);

// A bitmap object with the pixels of a packed bitmap.
HBITMAP BitmapFromDIB(HDIB dib);

// The colour table of a bitmap with a header of 40 bytes as a logical palette; for 24 bits without
// a table a spread of 256 colours.
HPALETTE CreatePaletteFromDIB(std::span<BYTE const> block);

// White and black.
HPALETTE CreateMonoPalette();

// The palette of the screen, or of a context. Null if it has none, or more than 256 entries.
HPALETTE GetSystemPalette();
HPALETTE GetSystemPaletteOf(HDC context);

// Copies a logical palette into the colour table of a bitmap's block. Without one, or with one that
// has more entries than the table, the table gets the standard colours.
void CopyPaletteToDIB(HPALETTE palette, std::span<BYTE> block);

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_BITMAP_OBJECTS_WINDOWS_H_

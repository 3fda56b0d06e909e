// Bitmap and palette objects.
#include <sorrelin/image/bitmap_objects_windows.h>
#include <sorrelin/image/toolbox/color_table.h>
#include <sorrelin/image/toolbox/dib_layout.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <sorrelin/image/toolbox/new_block.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace sorrelin {
namespace {

constexpr WORD kPaletteVersion = 768;
constexpr int kMaxPaletteEntries = 256;
// Header and spare bytes of a bitmap that is made of a bitmap object.
constexpr uint64_t kBesidesTableAndRows = 50;

// The screen's context.
class ScreenContext {
 public:
  ScreenContext() : context_(GetDC(nullptr)) {}
  ~ScreenContext() { ReleaseDC(nullptr, context_); }
  ScreenContext(ScreenContext const&) = delete;
  ScreenContext& operator=(ScreenContext const&) = delete;
  operator HDC() const { return context_; }

 private:
  HDC context_;
};

// A palette in a context while this lives; null changes nothing.
class SelectedPalette {
 public:
  SelectedPalette(HDC context, HPALETTE palette) : context_(context) {
    if (palette == nullptr) return;
    old_ = SelectPalette(context, palette, FALSE);
    RealizePalette(context);
  }
  ~SelectedPalette() {
    if (old_ != nullptr) SelectPalette(context_, old_, FALSE);
  }
  SelectedPalette(SelectedPalette const&) = delete;
  SelectedPalette& operator=(SelectedPalette const&) = delete;

 private:
  HDC context_;
  HPALETTE old_ = nullptr;
};

// Deletes a palette of our own.
class OwnedPalette {
 public:
  explicit OwnedPalette(HPALETTE palette) : palette_(palette) {}
  ~OwnedPalette() {
    if (palette_ != nullptr) DeleteObject(palette_);
  }
  OwnedPalette(OwnedPalette const&) = delete;
  OwnedPalette& operator=(OwnedPalette const&) = delete;
  HPALETTE get() const { return palette_; }

 private:
  HPALETTE palette_;
};

HPALETTE MakePalette(std::vector<PALETTEENTRY> const& entries) {
  if (entries.empty() || entries.size() > 0xFFFF) return nullptr;
  size_t const head = offsetof(LOGPALETTE, palPalEntry);
  std::vector<BYTE> bytes(head + entries.size() * sizeof(PALETTEENTRY));
  WORD const fields[] = {kPaletteVersion, static_cast<WORD>(entries.size())};
  std::memcpy(bytes.data(), fields, sizeof fields);
  std::memcpy(bytes.data() + head, entries.data(), bytes.size() - head);
  return CreatePalette(reinterpret_cast<LOGPALETTE const*>(bytes.data()));
}

// The first `count` colours that the system shows in a context.
HPALETTE SystemPalette(HDC context, int count) {
  if (count < 1 || count > kMaxPaletteEntries) return nullptr;
  std::vector<PALETTEENTRY> entries(static_cast<size_t>(count));
  GetSystemPaletteEntries(context, 0, static_cast<UINT>(count), entries.data());
  for (PALETTEENTRY& entry : entries) entry.peFlags = 0;
  return MakePalette(entries);
}

// Takes the rows of a bitmap object, one a call. False if one could not be taken.
bool TakeRows(HBITMAP bitmap, HPALETTE palette, std::span<BYTE> block) {
  auto* const info = reinterpret_cast<BITMAPINFO*>(block.data());
  BITMAPINFOHEADER const before = info->bmiHeader;
  uint64_t const stride = PackedStride(before.biWidth, before.biBitCount);
  BYTE* const rows = GetDIBBits(block).data();
  ScreenContext const screen;
  SelectedPalette const selected(screen, palette);
  bool taken = true;
  for (LONG y = 0; y < before.biHeight && taken; ++y) {
    taken = GetDIBits(screen, bitmap, static_cast<UINT>(y), 1,
                      rows + static_cast<uint64_t>(y) * stride, info, DIB_RGB_COLORS) != 0;
  }
  // The system counts colours in its own way.
  info->bmiHeader.biClrUsed = before.biClrUsed;
  info->bmiHeader.biClrImportant = before.biClrImportant;
  return taken;
}

HDIB MakeDib(BITMAPINFOHEADER const& header, HBITMAP bitmap, HPALETTE palette) {
  uint64_t const table_bytes = uint64_t{header.biClrUsed} * sizeof(RGBQUAD);
  OwnedBlock block(NewBlock(header.biSizeImage + table_bytes + kBesidesTableAndRows));
  {
    LockedBlock const locked(block.get());
    if (!locked) return nullptr;
    std::memcpy(locked.bytes().data(), &header, sizeof header);
    CopyPaletteToDIB(palette, locked.bytes());
    if (!TakeRows(bitmap, palette, locked.bytes())) return nullptr;
  }
  return block.Release();
}

// A copy of an uncompressed bitmap in which everything is there that its header promises. Null if
// that would pass 4 GiB or the header is not of 40 bytes.
HDIB WholeCopy(std::span<BYTE const> block) {
  DibLayout const layout(block);
  if (layout.header_bytes != sizeof(BITMAPINFOHEADER)) return nullptr;
  BITMAPINFOHEADER header{};
  std::memcpy(&header, block.data(), std::min(block.size(), sizeof header));
  if (header.biCompression != BI_RGB) return nullptr;
  if (layout.PictureBytes() > kMaxBlockBytes) return nullptr;
  return NewBlock(layout.RowsOffset() + layout.PictureBytes(), block);
}

HBITMAP MakeSection(HDC context, std::span<BYTE> block) {
  auto const* const info = reinterpret_cast<BITMAPINFO const*>(block.data());
  OwnedPalette const palette(CreatePaletteFromDIB(block));
  SelectedPalette const selected(context, palette.get());
  void* bits = nullptr;
  HBITMAP const bitmap = CreateDIBSection(context, info, DIB_RGB_COLORS, &bits, nullptr, 0);
  if (bitmap == nullptr) return nullptr;
  UINT const rows = static_cast<UINT>(DibLayout(block).Rows());
  SetDIBits(context, bitmap, 0, rows, GetDIBBits(block).data(), info, DIB_RGB_COLORS);
  return bitmap;
}

}  // namespace

HDIB DIBFromBitmap(HBITMAP bitmap, HPALETTE palette) {
  BITMAP object{};
  if (GetObjectW(bitmap, sizeof object, &object) == 0) return nullptr;
  int const bits = object.bmPlanes * object.bmBitsPixel;
  BITMAPINFOHEADER header;
  if (!InitBitmapInfoHeader(header, object.bmWidth, object.bmHeight, bits)) return nullptr;
  if (palette != nullptr || bits <= 1) return MakeDib(header, bitmap, palette);
  OwnedPalette const system(GetSystemPalette());
  return MakeDib(header, bitmap, system.get());
}

HBITMAP BitmapFromDIB(HDIB dib) {
  OwnedBlock whole;
  {
    LockedBlock const source(dib);
    if (!source) return nullptr;
    whole = OwnedBlock(WholeCopy(source.bytes()));
  }
  LockedBlock const locked(whole.get());
  if (!locked) return nullptr;
  BITMAPINFOHEADER header;
  std::memcpy(&header, locked.bytes().data(), sizeof header);
  bool const plain = header.biPlanes == 1 && (header.biBitCount == 1 || header.biBitCount == 8);
  if (!plain) return MakeSection(ScreenContext(), locked.bytes());
  HDC const context = CreateCompatibleDC(nullptr);
  HBITMAP const bitmap = MakeSection(context, locked.bytes());
  DeleteDC(context);
  return bitmap;
}

HPALETTE CreatePaletteFromDIB(std::span<BYTE const> block) {
  DibLayout const layout(block);
  if (layout.header_bytes != sizeof(BITMAPINFOHEADER)) return nullptr;
  if (layout.colors == 0 && layout.bits != 24) return nullptr;
  if (layout.colors > 0xFFFF) return nullptr;
  std::vector<PALETTEENTRY> entries;
  for (DWORD i = 0; i < (layout.colors != 0 ? layout.colors : kSpreadColors); ++i) {
    RGBQUAD const color = layout.colors != 0 ? TableColor(block, i) : SpreadColor(i);
    entries.push_back({color.rgbRed, color.rgbGreen, color.rgbBlue, 0});
  }
  return MakePalette(entries);
}

HPALETTE CreateMonoPalette() { return MakePalette({{255, 255, 255, 0}, {0, 0, 0, 0}}); }

HPALETTE GetSystemPalette() {
  ScreenContext const screen;
  int const count = GetDeviceCaps(screen, SIZEPALETTE);
  return SystemPalette(screen, count != 0 ? count : GetDeviceCaps(screen, NUMCOLORS));
}

HPALETTE GetSystemPaletteOf(HDC context) {
  bool const has_palette = (GetDeviceCaps(context, RASTERCAPS) & RC_PALETTE) != 0;
  return SystemPalette(context, GetDeviceCaps(context, has_palette ? SIZEPALETTE : NUMCOLORS));
}

void CopyPaletteToDIB(HPALETTE palette, std::span<BYTE> block) {
  WORD count = 0;
  if (palette == nullptr || GetObjectW(palette, sizeof count, &count) == 0 ||
      count > GetColorCount(block)) {
    SetDefaultColorTable(block);
    return;
  }
  std::vector<PALETTEENTRY> entries(count);
  GetPaletteEntries(palette, 0, count, entries.data());
  for (DWORD i = 0; i < count; ++i) {
    SetTableColor(block, i, {entries[i].peBlue, entries[i].peGreen, entries[i].peRed, 0});
  }
}

}  // namespace sorrelin

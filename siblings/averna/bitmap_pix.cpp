// Conversion of packed bitmaps: BITMAPINFOHEADER, RGBQUAD table, rows padded to 4 bytes, the lowest
// first unless the height is negative. Offsets and sizes are in bytes.
#include <siblings/averna/averna.h>
#include <siblings/averna/bitmap_pix.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/row_stride.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <span>

namespace sorrelin::averna {
namespace {

constexpr double kMetresPerInch = 0.0254;
constexpr size_t kTableEntries = 256;

// A bitmap's block, locked for the life of this object; empty if it is none.
class LockedBlock {
 public:
  explicit LockedBlock(HDIB dib) : dib_(dib), bytes_(static_cast<BYTE*>(GlobalLock(dib))) {}
  ~LockedBlock() {
    if (bytes_ != nullptr) GlobalUnlock(dib_);
  }
  LockedBlock(LockedBlock const&) = delete;
  LockedBlock& operator=(LockedBlock const&) = delete;
  std::span<BYTE const> bytes() const {
    return bytes_ == nullptr ? std::span<BYTE const>() : std::span(bytes_, GlobalSize(dib_));
  }

 private:
  HDIB dib_;
  BYTE const* bytes_;
};

// A bitmap whose rows are all in its block.
struct Bitmap {
  l_int32 width = 0;
  l_int32 height = 0;
  int bits = 0;
  bool top_down = false;
  size_t stride = 0;
  std::span<BYTE const> rows;
  std::array<RGBQUAD, kTableEntries> table{};  // black after the bitmap's own entries

  BYTE const* Row(l_int32 y) const {
    l_int32 const index = top_down ? y : height - 1 - y;
    return rows.data() + static_cast<size_t>(index) * stride;
  }
};

size_t TableEntries(BITMAPINFOHEADER const& header) {
  if (header.biClrUsed != 0) return header.biClrUsed;
  return header.biBitCount <= 8 ? size_t{1} << header.biBitCount : 0;
}

bool Supported(BITMAPINFOHEADER const& header) {
  int64_t const height = header.biHeight;
  return header.biSize >= sizeof header && header.biCompression == 0 && header.biWidth > 0 &&
         header.biWidth <= AVERNA_MAX_EXTENT && height != 0 &&
         std::abs(height) <= AVERNA_MAX_EXTENT &&
         (header.biBitCount == 1 || header.biBitCount == 8 || header.biBitCount == 24);
}

// False if the block does not hold what the header promises.
bool Describe(BITMAPINFOHEADER const& header, std::span<BYTE const> block, Bitmap& bitmap) {
  if (!Supported(header)) return false;
  bitmap.width = header.biWidth;
  bitmap.height = std::abs(header.biHeight);
  bitmap.bits = header.biBitCount;
  bitmap.top_down = header.biHeight < 0;
  uint64_t const stride = RowStride(static_cast<uint64_t>(bitmap.width), header.biBitCount);
  size_t const entries = TableEntries(header);
  uint64_t const rows_at = header.biSize + uint64_t{entries} * sizeof(RGBQUAD);
  uint64_t const rows_bytes = stride * static_cast<uint64_t>(bitmap.height);
  if (rows_at > block.size() || rows_bytes > block.size() - rows_at) return false;
  bitmap.stride = static_cast<size_t>(stride);
  bitmap.rows = block.subspan(static_cast<size_t>(rows_at), static_cast<size_t>(rows_bytes));
  std::memcpy(bitmap.table.data(), block.data() + header.biSize,
              std::min(entries, kTableEntries) * sizeof(RGBQUAD));
  return true;
}

int Brightness(RGBQUAD const& color) {
  return 299 * color.rgbRed + 587 * color.rgbGreen + 114 * color.rgbBlue;
}

bool IsGrey(RGBQUAD const& color) {
  return color.rgbRed == color.rgbGreen && color.rgbGreen == color.rgbBlue;
}

l_uint32 Pixel(RGBQUAD const& color) {
  l_uint32 pixel = 0;
  composeRGBPixel(color.rgbRed, color.rgbGreen, color.rgbBlue, &pixel);
  return pixel;
}

// Words are 32 bits, the leftmost pixel in the highest bits.
l_uint32* Line(PIX* pix, l_int32 y) {
  return pixGetData(pix) + static_cast<size_t>(y) * static_cast<size_t>(pixGetWpl(pix));
}

void FillBilevel(Bitmap const& bitmap, PIX* pix) {
  l_int32 const bytes = (bitmap.width + 7) / 8;
  // A set pixel is ink.
  int const flip = Brightness(bitmap.table[0]) < Brightness(bitmap.table[1]) ? 0xFF : 0;
  for (l_int32 y = 0; y < bitmap.height; ++y) {
    BYTE const* const row = bitmap.Row(y);
    l_uint32* const line = Line(pix, y);
    for (l_int32 i = 0; i < bytes; ++i) {
      SET_DATA_BYTE(line, i, static_cast<l_uint8>(row[i] ^ flip));
    }
  }
  pixSetPadBits(pix, 0);
}

void FillGrey(Bitmap const& bitmap, PIX* pix) {
  for (l_int32 y = 0; y < bitmap.height; ++y) {
    BYTE const* const row = bitmap.Row(y);
    l_uint32* const line = Line(pix, y);
    for (l_int32 x = 0; x < bitmap.width; ++x) {
      SET_DATA_BYTE(line, x, bitmap.table[row[x]].rgbRed);
    }
  }
}

void FillColor(Bitmap const& bitmap, PIX* pix) {
  for (l_int32 y = 0; y < bitmap.height; ++y) {
    BYTE const* const row = bitmap.Row(y);
    l_uint32* const line = Line(pix, y);
    for (l_int32 x = 0; x < bitmap.width; ++x) {
      BYTE const* const triple = row + 3 * x;
      line[x] = Pixel(bitmap.bits == 8 ? bitmap.table[row[x]]
                                       : RGBQUAD{triple[0], triple[1], triple[2], 0});
    }
  }
}

// Dots per inch; a missing direction takes the value of the other.
void SetResolution(BITMAPINFOHEADER const& header, PIX* pix) {
  LONG const x = header.biXPelsPerMeter > 0 ? header.biXPelsPerMeter : header.biYPelsPerMeter;
  LONG const y = header.biYPelsPerMeter > 0 ? header.biYPelsPerMeter : header.biXPelsPerMeter;
  auto const dpi = [](LONG per_metre) {
    return static_cast<l_int32>(std::max(per_metre, LONG{0}) * kMetresPerInch + 0.5);
  };
  pixSetResolution(pix, dpi(x), dpi(y));
}

PixPtr Convert(Bitmap const& bitmap) {
  bool const grey =
      bitmap.bits == 8 && std::all_of(bitmap.table.begin(), bitmap.table.end(), IsGrey);
  PixPtr pix(pixCreate(bitmap.width, bitmap.height, bitmap.bits == 1 ? 1 : grey ? 8 : 32));
  if (pix == nullptr) return nullptr;
  if (bitmap.bits == 1) {
    FillBilevel(bitmap, pix.get());
  } else if (grey) {
    FillGrey(bitmap, pix.get());
  } else {
    FillColor(bitmap, pix.get());
  }
  return pix;
}

}  // namespace

PixPtr PixFromDib(HDIB dib) {
  LockedBlock const block(dib);
  BITMAPINFOHEADER header;
  if (block.bytes().size() < sizeof header) return nullptr;
  std::memcpy(&header, block.bytes().data(), sizeof header);
  Bitmap bitmap;
  if (!Describe(header, block.bytes(), bitmap)) return nullptr;
  PixPtr pix = Convert(bitmap);
  if (pix != nullptr) SetResolution(header, pix.get());
  return pix;
}

}  // namespace sorrelin::averna

// A packed bitmap as the library reads it: BITMAPINFOHEADER (40 bytes), RGBQUAD table at byte 40,
// rows bottom first, each padded to 4 bytes. Offsets and sizes are in bytes. Nothing outside the
// block is ever touched: what it lacks reads as 0. May include: platform/.
#ifndef SORRELIN_IMAGE_DIB_VIEW_H_
#define SORRELIN_IMAGE_DIB_VIEW_H_

#include <sorrelin/platform/types.h>

#include <cstdint>
#include <span>

namespace sorrelin {

inline constexpr uint64_t kDibHeaderBytes = sizeof(BITMAPINFOHEADER);
static_assert(kDibHeaderBytes == 40);

// Kept: each reader has its own rule for the first row; one rule for all would change streams.
inline constexpr uint64_t kBilevelRows = kDibHeaderBytes + 2 * sizeof(RGBQUAD);
inline constexpr uint64_t kPaletteRows = kDibHeaderBytes + 256 * sizeof(RGBQUAD);
// By the number of colours in use or else the depth, for the raw and Flate encoders.
uint64_t FirstRowOffset(BITMAPINFOHEADER const& header);

// Bytes of a row with and without its padding; 0 for depths other than 1, 8 and 24, and for a
// negative width.
uint64_t DibStride(int64_t width, int bits);
uint64_t DibPayload(int64_t width, int bits);

// Colour table entries that a bitmap of this depth has when its header does not say.
DWORD DefaultColors(int bits);

// Copies the `bytes` from `offset` on into `out`, and zeroes the rest of `out`.
void ReadOrZero(std::span<BYTE const> bytes, uint64_t offset, std::span<BYTE> out);

// Holds the lock on a bitmap's block for its lifetime.
class DibView {
 public:
  explicit DibView(HDIB bitmap);
  ~DibView();
  DibView(DibView const&) = delete;
  DibView& operator=(DibView const&) = delete;

  HDIB bitmap() const { return bitmap_; }
  bool IsLocked() const { return locked_; }
  BITMAPINFOHEADER const& header() const { return header_; }
  std::span<BYTE const> bytes() const { return bytes_; }
  // The bytes from `offset` on, at most `size` of them.
  std::span<BYTE const> Part(uint64_t offset, uint64_t size) const;
  // Leaves the block locked when the view goes.
  void KeepLocked() { keep_locked_ = true; }

 private:
  HDIB bitmap_;
  std::span<BYTE const> bytes_;
  BITMAPINFOHEADER header_{};
  bool locked_ = false;
  bool keep_locked_ = false;
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_DIB_VIEW_H_

// The bitmap that a decoder rebuilds: BITMAPINFOHEADER (40 bytes), colour table, and rows from the
// lowest up, each padded to 4 bytes, all 0 until they are written.
#ifndef SORRELIN_IMAGE_REBUILT_DIB_H_
#define SORRELIN_IMAGE_REBUILT_DIB_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace sorrelin {

class LockedBlock;
class OwnedBlock;

// The kind of an image, as the reader finds it and the decoders take it.
inline constexpr DWORD kKindBilevel = 1;  // 1 bit, 2 colours
inline constexpr DWORD kKindIndexed = 2;  // 8 bits, 256 colours
inline constexpr DWORD kKindRgb = 4;      // 24 bits, no colour table

inline constexpr DWORD kPaletteBytes = 256 * sizeof(RGBQUAD);

inline bool IsKnownKind(DWORD kind) {
  return kind == kKindBilevel || kind == kKindIndexed || kind == kKindRgb;
}

// Whether there are data and a known kind with what it needs.
// Kept: data that are refused stay locked; callers free them without looking at the lock count.
bool CanBeRebuilt(LockedBlock& data, DWORD kind, void const* palette);

// The two colours of a 1-bit bitmap as grey values, in table order.
struct BilevelColours {
  BYTE first;
  BYTE second;
};

// The colours that the polarity of an image asks for, where a set bit of the data is white; the
// coder of CCITT data has them the other way round.
BilevelColours ColoursOfRawData(bool black_is_1, bool decode_normal);
BilevelColours ColoursOfCcittData(bool black_is_1, bool decode_normal);

// Owns the bitmap, locked, until Release.
class RebuiltDib {
 public:
  RebuiltDib() = default;
  ~RebuiltDib();
  RebuiltDib(RebuiltDib const&) = delete;
  RebuiltDib& operator=(RebuiltDib const&) = delete;

  // Makes a bitmap of width x height pixels, of one of the three kinds. False if it would pass
  // 4 GiB or memory is short.
  bool Create(DWORD kind, DWORD width, uint64_t height);

  // Writes both entries of a 1-bit bitmap's table, all four bytes of each.
  void SetColours(BilevelColours colours);
  // Copies 1,024 bytes of table; what the palette's block lacks stays 0. False if the block cannot
  // be locked.
  bool CopyPalette(HGLOBAL palette);

  std::span<BYTE> block() const {
    return {bytes_, static_cast<size_t>(rows_ - bytes_) + static_cast<size_t>(height_) * stride_};
  }
  uint64_t height() const { return height_; }
  // Bytes of a row with its padding and without.
  size_t stride() const { return stride_; }
  size_t payload() const { return payload_; }
  // Row `y` counted from the block's start, that is from the lowest, y < height().
  BYTE* Row(uint64_t y) { return rows_ + y * stride_; }

  // Unlocks the bitmap and hands it over.
  OwnedBlock Release();

 private:
  void FillHeader(DWORD width, WORD bits);

  HGLOBAL block_ = nullptr;
  BYTE* bytes_ = nullptr;
  BYTE* rows_ = nullptr;
  uint64_t height_ = 0;
  size_t stride_ = 0;
  size_t payload_ = 0;
};

// Puts the bytes of an image stream, which come in order and without row padding, into the rows of
// a bitmap. RGB triples become blue, green, red.
class RowWriter {
 public:
  // `from_top`: the stream's first row is the top of the picture; otherwise it is the lowest row.
  RowWriter(RebuiltDib& dib, DWORD kind, bool from_top);

  // Takes the next bytes; what comes after the last row is dropped. For RGB only the last call may
  // end inside a triple, whose missing bytes are 0.
  void Write(std::span<BYTE const> bytes);

 private:
  RebuiltDib& dib_;
  bool const swap_;
  bool const from_top_;
  uint64_t row_ = 0;   // of the stream
  size_t column_ = 0;  // bytes into the row
};

}  // namespace sorrelin

#endif  // SORRELIN_IMAGE_REBUILT_DIB_H_

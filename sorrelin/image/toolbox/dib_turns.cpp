// Flips and quarter turns of packed bitmaps.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/toolbox/dib_layout.h>
#include <sorrelin/image/toolbox/dib_toolbox.h>
#include <sorrelin/image/toolbox/new_block.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace sorrelin {
namespace {

constexpr std::array<BYTE, 8> kMasks{128, 64, 32, 16, 8, 4, 2, 1};

using Source = std::span<BYTE const>;

// Rows of `out` become those of `in` in reverse; the blocks may hold fewer than the layout has.
void ReverseRows(DibLayout const& layout, Source in, std::span<BYTE> out) {
  uint64_t const stride = layout.Stride();
  for (uint64_t y = 0; y < layout.Rows() && stride != 0; ++y) {
    uint64_t const to = layout.RowsOffset() + y * stride;
    if (to >= out.size()) return;
    uint64_t const from = layout.RowsOffset() + (layout.Rows() - 1 - y) * stride;
    std::span<BYTE> const room = out.subspan(static_cast<size_t>(to));
    ReadOrZero(in, from, room.first(static_cast<size_t>(std::min<uint64_t>(stride, room.size()))));
  }
}

bool IsTurnedDepth(int bits) {
  return bits == 1 || bits == 4 || bits == 8 || bits == 15 || bits == 16 || bits == 24 ||
         bits == 32;
}

// A picture's rows on their way into a quarter turn: pixel (x, y) in block order goes to column y
// of row width - 1 - x.
class QuarterTurn {
 public:
  // `target` holds the rows of the turned picture, width * TargetStride() bytes.
  QuarterTurn(DibLayout const& layout, std::span<BYTE> target)
      : width_(static_cast<uint64_t>(layout.width)),
        stored_bits_(StoredBits(layout.bits)),
        bits_(layout.bits),
        target_stride_(PackedStride(layout.height, layout.bits)),
        target_(target) {}

  // Takes row `y`, of which `row` may lack the end.
  void TakeRow(uint64_t y, Source row) {
    if (bits_ == 1) {
      TakeBits(y, row);
    } else {
      TakePixels(y, row);
    }
  }

 private:
  BYTE* TargetRow(uint64_t x) { return target_.data() + (width_ - 1 - x) * target_stride_; }

  void TakeBits(uint64_t y, Source row) {
    BYTE const mask = kMasks[y % 8];
    for (size_t i = 0; i < row.size(); ++i) {
      if (row[i] == 0) continue;
      uint64_t const end = std::min<uint64_t>(8, width_ - 8 * i);
      for (size_t bit = 0; bit < end; ++bit) {
        if ((row[i] & kMasks[bit]) == 0) continue;
        BYTE& target = TargetRow(8 * i + bit)[y / 8];
        target = static_cast<BYTE>(target | mask);
      }
    }
  }

  void TakePixels(uint64_t y, Source row) {
    // Room for the bytes that the last pixel may lack.
    row_.assign(row.begin(), row.end());
    row_.resize(row.size() + sizeof(DWORD));
    uint64_t const here = (row.size() * 8 + stored_bits_ - 1) / stored_bits_;
    uint64_t const to = y * stored_bits_;
    for (uint64_t x = 0; x < std::min(here, width_); ++x) {
      uint64_t const from = x * stored_bits_;
      CopyPixel(row_.data() + from / 8, static_cast<int>(from % 8), TargetRow(x) + to / 8,
                static_cast<int>(to % 8), bits_);
    }
  }

  uint64_t width_;
  uint64_t stored_bits_;
  int bits_;
  uint64_t target_stride_;
  std::span<BYTE> target_;
  std::vector<BYTE> row_;
};

bool CanTurn(DibLayout const& layout) {
  return layout.header_bytes >= sizeof(BITMAPINFOHEADER) && IsTurnedDepth(layout.bits) &&
         layout.width > 0 && layout.height > 0 && layout.PictureBytes() <= kMaxBlockBytes;
}

// Turns the header at the start of a block.
void TurnHeader(BYTE* block, uint64_t picture_bytes) {
  BITMAPINFOHEADER header;
  std::memcpy(&header, block, sizeof header);
  std::swap(header.biWidth, header.biHeight);
  std::swap(header.biXPelsPerMeter, header.biYPelsPerMeter);
  header.biSizeImage = static_cast<DWORD>(picture_bytes);
  std::memcpy(block, &header, sizeof header);
}

// Goes through the rows that the block holds; the others are 0, as the target is already.
void TurnRows(DibLayout const& layout, Source in, std::span<BYTE> target) {
  QuarterTurn turn(layout, target);
  uint64_t const payload = (static_cast<uint64_t>(layout.width) * StoredBits(layout.bits) + 7) / 8;
  for (uint64_t y = 0; y < layout.Rows(); ++y) {
    uint64_t const at = layout.RowsOffset() + y * layout.Stride();
    if (at >= in.size()) return;
    Source const rest = in.subspan(static_cast<size_t>(at));
    turn.TakeRow(y, rest.first(static_cast<size_t>(std::min<uint64_t>(payload, rest.size()))));
  }
}

}  // namespace

HDIB FlipDIBVertical(HDIB dib) {
  GlobalCompact(0);
  LockedBlock const source(dib);
  if (!source) return nullptr;
  DibLayout const layout(source.bytes());
  if (layout.PictureBytes() > kMaxBlockBytes) return nullptr;
  OwnedBlock flipped(NewBlock(source.bytes().size() + kSpareBytes, source.bytes()));
  {
    LockedBlock const target(flipped.get());
    if (!target) return nullptr;
    ReverseRows(layout, source.bytes(), target.bytes());
  }
  return flipped.Release();
}

HDIB RotateDIB90(HDIB dib) {
  GlobalCompact(0);
  LockedBlock const source(dib);
  if (!source) return nullptr;
  DibLayout const layout(source.bytes());
  if (!CanTurn(layout)) return nullptr;
  uint64_t const picture_bytes =
      static_cast<uint64_t>(layout.width) * PackedStride(layout.height, layout.bits);
  if (picture_bytes > kMaxBlockBytes) return nullptr;
  uint64_t const head = std::min<uint64_t>(layout.RowsOffset(), source.bytes().size());
  OwnedBlock turned(NewBlock(layout.RowsOffset() + picture_bytes + kSpareBytes,
                             source.bytes().first(static_cast<size_t>(head))));
  {
    LockedBlock const target(turned.get());
    if (!target) return nullptr;
    TurnHeader(target.bytes().data(), picture_bytes);
    TurnRows(layout, source.bytes(), GetDIBBits(target.bytes()));
  }
  return turned.Release();
}

void CopyPixel(BYTE const* source, int source_bit, BYTE* target, int target_bit, int bits) {
  switch (bits) {
    case 1: {
      BYTE const mask = kMasks[static_cast<size_t>(target_bit & 7)];
      bool const set = (*source & kMasks[static_cast<size_t>(source_bit & 7)]) != 0;
      *target = static_cast<BYTE>(set ? *target | mask : *target & ~mask);
      break;
    }
    case 4: {
      int const nibble = source_bit == 0 ? *source >> 4 : *source & 0x0F;
      *target = static_cast<BYTE>(target_bit == 0 ? (*target & 0x0F) | (nibble << 4)
                                                  : (*target & 0xF0) | nibble);
      break;
    }
    case 8:
    case 15:
    case 16:
    case 24:
    case 32:
      std::copy_n(source, StoredBits(bits) / 8, target);
      break;
    default:
      break;
  }
}

}  // namespace sorrelin

// Flate image data back into a bitmap.
#include <sorrelin/image/decoders.h>
#include <sorrelin/image/inflate_stream.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <memory>

namespace sorrelin {

namespace {

// Bytes that are inflated at a time: they stay in the processor's cache on their way to the rows.
// A multiple of 3, so that no RGB triple falls apart.
constexpr size_t kPieceBytes = 3 * 32768;

// Inflates into the rows. False if the data hold more than height * stride bytes, and for rows of
// no bytes; the padding of the rows counts, so what a stream holds beyond its rows is dropped up to
// there. Damaged data give what they hold before the damage.
bool InflateRows(std::span<BYTE const> data, RebuiltDib& dib, RowWriter rows) {
  if (dib.stride() == 0) return false;
  InflateStream stream(data);
  auto const piece = std::make_unique<BYTE[]>(kPieceBytes);
  uint64_t room = dib.height() * dib.stride();
  while (room != 0) {
    size_t const wanted = static_cast<size_t>(std::min<uint64_t>(room, kPieceBytes));
    size_t const count = stream.Read({piece.get(), wanted});
    rows.Write({piece.get(), count});
    if (count < wanted) return true;
    room -= count;
  }
  return !stream.WantsMoreRoom();
}

}  // namespace

Result<OwnedBlock> DecodeFlate(HGLOBAL block, ImageShape const& shape, Polarity polarity) {
  LockedBlock data(block);
  if (!data || !CanBeRebuilt(data, shape.kind, shape.palette)) return Status::Failed();

  int64_t const height = static_cast<LONG>(shape.height);
  RebuiltDib dib;
  if (!dib.Create(shape.kind, shape.width, static_cast<uint64_t>(height < 0 ? -height : height))) {
    return Status::Failed(PDF_ERROR_MEMORY);
  }
  if (shape.kind == kKindBilevel) {
    dib.SetColours(ColoursOfRawData(polarity.black_is_1, polarity.decode_normal));
  } else if (shape.kind == kKindIndexed && !dib.CopyPalette(shape.palette)) {
    return Status::Failed(PDF_ERROR_PALETTE);
  }
  if (!InflateRows(data.bytes(), dib, RowWriter(dib, shape.kind, height >= 0))) {
    return Status::Failed(PDF_ERROR_DECOMPRESSION);
  }
  return dib.Release();
}

}  // namespace sorrelin

// Raw image data back into a bitmap.
#include <sorrelin/image/decoders.h>
#include <sorrelin/image/pixel_order.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <cstring>

namespace sorrelin {

namespace {

// Copies rows of RGB triples and exchanges the first and third byte of each, in the data too. Of a
// triple that the data cut short the missing bytes read as 0, and the byte that would go there is
// lost.
void TakeRgbRows(RebuiltDib& dib, std::span<BYTE> data, bool from_top) {
  for (uint64_t row = 0; row < dib.height() && !data.empty(); ++row) {
    std::span<BYTE> const source = data.first(std::min(data.size(), dib.payload()));
    BYTE* const to = dib.Row(from_top ? dib.height() - 1 - row : row);
    CopySwapped(to, source);
    // Kept: the caller's block is left with its bytes exchanged; a caller that decodes it again
    // gets the colours the other way round.
    std::memcpy(source.data(), to, source.size());
    std::fill(to + source.size(), to + dib.payload(), BYTE{0});
    data = data.subspan(source.size());
  }
}

}  // namespace

Result<OwnedBlock> DecodeRaw(HGLOBAL block, ImageShape const& shape, Polarity polarity) {
  LockedBlock const data(block);
  if (data.bytes().empty() || !IsKnownKind(shape.kind)) return Status::Failed();
  if (shape.kind == kKindIndexed && shape.palette == nullptr) return Status::Failed();

  int64_t const height = static_cast<LONG>(shape.height);
  RebuiltDib dib;
  if (!dib.Create(shape.kind, shape.width, static_cast<uint64_t>(height < 0 ? -height : height))) {
    return {OwnedBlock(INVALID_HANDLE_VALUE), Status::Failed(PDF_ERROR_MEMORY)};
  }
  if (shape.kind == kKindBilevel) {
    dib.SetColours(ColoursOfRawData(polarity.black_is_1, polarity.decode_normal));
  } else if (shape.kind == kKindIndexed && !dib.CopyPalette(shape.palette)) {
    return Status::Failed();
  }
  if (shape.kind == kKindRgb) {
    if (dib.payload() != 0) TakeRgbRows(dib, data.bytes(), height >= 0);
  } else {
    RowWriter(dib, shape.kind, height >= 0).Write(data.bytes());
  }
  return dib.Release();
}

}  // namespace sorrelin

// Raw image data.
#include <sorrelin/image/encoders.h>
#include <sorrelin/image/pixel_order.h>
#include <sorrelin/image/raw_image.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>

namespace sorrelin {

OwnedBlock BuildRawImage(DibView const& dib, DWORD& size) {
  BITMAPINFOHEADER const& header = dib.header();
  uint64_t const payload = DibPayload(header.biWidth, header.biBitCount);
  uint64_t const stride = DibStride(header.biWidth, header.biBitCount);
  uint64_t const rows = header.biHeight > 0 ? static_cast<uint64_t>(header.biHeight) : 0;
  if (payload == 0 || rows == 0 || rows > UINT32_MAX / payload) return OwnedBlock();
  OwnedBlock block(GlobalAlloc(GHND, static_cast<SIZE_T>(rows * payload)));
  LockedBlock const locked(block.get());
  if (!locked) return OwnedBlock();
  BYTE* out = locked.bytes().data();
  uint64_t const first_row = FirstRowOffset(header);
  for (uint64_t row = rows; row-- > 0; out += payload) {
    std::span<BYTE const> const source = dib.Part(first_row + row * stride, payload);
    if (header.biBitCount == 24) {
      CopySwapped(out, source);
    } else {
      std::copy(source.begin(), source.end(), out);
    }
  }
  size = static_cast<DWORD>(rows * payload);
  return block;
}

Result<OwnedBlock> EncodeRaw(DibView& dib, DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  OwnedBlock raw = BuildRawImage(dib, size);
  if (raw.IsValid()) return raw;
  // Kept: the bitmap stays locked after code 10.
  dib.KeepLocked();
  return Refused(PDF_ERROR_MEMORY);
}

}  // namespace sorrelin

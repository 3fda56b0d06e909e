// A bitmap on its way into a page.
#include <sorrelin/image/bitmap_facts.h>
#include <sorrelin/image/coded_bitmap.h>
#include <sorrelin/image/compression.h>

#include <utility>

namespace sorrelin {

namespace {

// Size, depth, resolution and polarity; the code of what is refused.
Status Describe(DibView const& dib, CodedBitmap& coded) {
  coded.size = {dib.header().biWidth, dib.header().biHeight};
  coded.bits = dib.header().biBitCount;
  if (coded.size.x == 0 || coded.size.y == 0) return Status::Failed(PDF_ERROR_INVALID_IMAGE_SIZE);
  if (coded.bits != 1 && coded.bits != 8 && coded.bits != 24) {
    return Status::Failed(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  }
  coded.dpi = Resolution(dib);
  if (coded.dpi.x == 0 || coded.dpi.y == 0) return Status::Failed(PDF_ERROR_INVALID_DPI);
  if (coded.bits == 1) coded.first_is_black = FirstColourIsBlack(dib);
  return Status::Ok();
}

// Kept: the compression is tested by its bits here and by equality where the coder is chosen.
bool IsPairRefused(int bits, DWORD compression) {
  return bits == 1 ? IsJpeg(compression) : IsCcitt(compression);
}

Status TakePalette(DibView& dib, CodedBitmap& coded) {
  if (coded.bits != 8) return Status::Ok();
  DWORD bytes = 0;
  Result<OwnedBlock> palette = ExtractPalette(dib, bytes);
  coded.palette = std::move(palette.value());
  return palette.status();
}

Status TakeData(DibView& dib, Coding const& coding, CodedBitmap& coded) {
  Result<OwnedBlock> data = EncodeImage(dib, coding, coded.bytes);
  coded.data = std::move(data.value());
  // A coder that had no memory for its block may not say so; a page must not be lost in silence.
  bool const lost = data.ok() && !coded.data.IsValid();
  return lost ? Status::Failed(PDF_ERROR_MEMORY) : data.status();
}

}  // namespace

Result<CodedBitmap> CodeBitmap(HDIB bitmap, Coding const& coding) {
  if (bitmap == nullptr) return Status::Failed(PDF_ERROR_INVALID_HANDLE);
  CodedBitmap coded;
  DibView dib(bitmap);
  Status const described = Describe(dib, coded);
  if (!described.ok()) return described;
  if (IsPairRefused(coded.bits, coding.compression)) return Status::Failed(PDF_ERROR_COMPRESSION);
  Status const palette = TakePalette(dib, coded);
  if (!palette.ok()) return palette;
  Status const data = TakeData(dib, coding, coded);
  if (!data.ok()) return data;
  return coded;
}

}  // namespace sorrelin

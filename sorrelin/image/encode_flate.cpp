// Flate image data: zlib over the raw image.
#include <sorrelin/image/encoders.h>
#include <sorrelin/image/flate.h>
#include <sorrelin/image/raw_image.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <zlib.h>

#include <algorithm>
#include <limits>

namespace sorrelin {

namespace {

constexpr int kHighestLevel = 9;
constexpr uint64_t kFirstCapacityDivisor = 100;

uint64_t FirstCapacity(uint64_t raw_bytes) {
  return std::max<uint64_t>(raw_bytes / kFirstCapacityDivisor, 1);
}

uint64_t DoubledCapacity(uint64_t raw_bytes, uint64_t compressed_bytes) {
  uint64_t capacity = FirstCapacity(raw_bytes);
  while (capacity < compressed_bytes) capacity *= 2;
  return capacity;
}

// Room for any result, or as much as the compressor counts where that is less.
uLongf RoomFor(size_t raw_bytes) {
  uLongf const bound = compressBound(static_cast<uLong>(raw_bytes));
  return bound < raw_bytes ? std::numeric_limits<uLongf>::max() : bound;
}

}  // namespace

int FlateLevel(int quality) {
  return quality >= 0 && quality <= kHighestLevel ? quality : Z_DEFAULT_COMPRESSION;
}

// Compresses once into a block that holds any result, then gives it the size that doubling would
// have reached; untouched pages of the first block cost nothing.
OwnedBlock CompressFlate(std::span<BYTE const> raw, int level, DWORD& size) {
  uLongf compressed = RoomFor(raw.size());
  OwnedBlock block(GlobalAlloc(GPTR, compressed));
  BYTE* const out = static_cast<BYTE*>(GlobalLock(block.get()));
  if (out == nullptr) return OwnedBlock();
  int const result = compress2(out, &compressed, raw.data(), static_cast<uLong>(raw.size()), level);
  GlobalUnlock(block.get());
  if (result == Z_MEM_ERROR || result == Z_BUF_ERROR) return OwnedBlock();
  // Kept: a level that zlib refuses leaves the first block as it is, all of it zeros and all of it
  // counted; callers write size bytes.
  if (result == Z_STREAM_ERROR) compressed = static_cast<uLongf>(FirstCapacity(raw.size()));
  uint64_t const capacity = DoubledCapacity(raw.size(), compressed);
  if (capacity > UINT32_MAX) return OwnedBlock();
  HGLOBAL const resized =
      GlobalReAlloc(block.get(), static_cast<SIZE_T>(capacity), GMEM_MOVEABLE | GMEM_ZEROINIT);
  if (resized == nullptr) return OwnedBlock();
  // Where the size makes a block move, its handle is another one.
  block.Release();
  size = static_cast<DWORD>(compressed);
  return OwnedBlock(resized);
}

Result<OwnedBlock> EncodeFlate(DibView& dib, int level, DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  DWORD raw_bytes = 0;
  OwnedBlock const raw = BuildRawImage(dib, raw_bytes);
  if (!raw.IsValid()) {
    // Kept: the bitmap stays locked after code 10.
    dib.KeepLocked();
    return Refused(PDF_ERROR_MEMORY);
  }
  LockedBlock const data(raw.get());
  // Kept: a block that cannot be had gives 0 and no code.
  return CompressFlate(data.bytes().first(raw_bytes), level, size);
}

}  // namespace sorrelin

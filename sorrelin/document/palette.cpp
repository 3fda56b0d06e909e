// The colour table of an indexed image.
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/palette.h>
#include <sorrelin/document/stream_object.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <span>

namespace sorrelin {

namespace {

constexpr uint64_t kMostEntries = UINT32_MAX / sizeof(RGBQUAD);

// The bytes after the keyword, through the end of the object: nothing looks at the stream's real
// length. Nothing without the keyword or a /Length.
std::optional<std::span<BYTE const>> FindLookup(ObjectLoader& objects, std::span<BYTE> text) {
  DWORD length = 0;
  if (!objects.ReadNumber(text, "Length", &length) || length == 0) return std::nullopt;
  text.back() = 0;
  return FindImageData(text);
}

// Entries that the bytes do not reach stay as they are, 0.
void FillEntries(std::span<BYTE const> triples, BYTE* entries, uint64_t count) {
  for (uint64_t i = 0; i < count && !triples.empty(); ++i, entries += sizeof(RGBQUAD)) {
    entries[0] = triples.size() > 2 ? triples[2] : BYTE{0};
    entries[1] = triples.size() > 1 ? triples[1] : BYTE{0};
    entries[2] = triples[0];
    triples = triples.subspan(std::min<size_t>(3, triples.size()));
  }
}

}  // namespace

Palette ReadPalette(ObjectLoader& objects, DWORD bits, DWORD high, DWORD number) {
  uint64_t const count = uint64_t{high} + 1;
  if (count > kMostEntries) return {};
  Palette palette{OwnedBlock(GlobalAlloc(GPTR, static_cast<SIZE_T>(count * sizeof(RGBQUAD)))), {}};
  LockedBlock const lock(palette.block.get());
  if (!lock) return {};
  LoadedObject const object = objects.Open(number);
  auto const triples = object ? FindLookup(objects, object.text()) : std::nullopt;
  if (!triples) return {};
  BYTE* const entries = lock.bytes().data();
  FillEntries(*triples, entries, count);
  if (bits == 1 && high != 0) palette.black_is_1 = entries[0] != 0;
  return palette;
}

}  // namespace sorrelin

// The colour table of an indexed image, from its lookup stream: red, green, blue for each entry.
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/number_value.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <span>

namespace {

using sorrelin::LoadedObject;

// Kept: one byte for the line end behind the keyword, whatever line end the file has; a file with
// CR LF gets its table shifted by a byte.
constexpr size_t kDataBehindKeyword = 7;

constexpr uint64_t kMostEntries = UINT32_MAX / sizeof(RGBQUAD);

// Finds the bytes behind the keyword, through the end of the object: nothing looks at the stream's
// real length.
bool FindLookup(sorrelin::SessionState& session, LoadedObject const& object,
                std::span<BYTE const>& lookup) {
  DWORD length = 0;
  if (!sorrelin::ReadNumber(session, object, "Length", &length) || length == 0) return false;
  std::span<BYTE> const bytes(object.data(), object.size());
  bytes.back() = 0;
  BYTE const* const key = session.GetKeyBeginning(object.data(), object.size(), "stream");
  if (key == nullptr) return false;
  size_t const at = static_cast<size_t>(key - bytes.data()) + kDataBehindKeyword;
  lookup = bytes.subspan(std::min(at, bytes.size()));
  return true;
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

void* sorrelin::SessionState::LoadPalette(DWORD nBitsPerComponent, DWORD nHighValue,
                                          DWORD nObject) {
  uint64_t const count = uint64_t{nHighValue} + 1;
  if (count > kMostEntries) return nullptr;
  sorrelin::OwnedBlock palette(GlobalAlloc(GPTR, static_cast<SIZE_T>(count * sizeof(RGBQUAD))));
  BYTE* const entries = static_cast<BYTE*>(GlobalLock(palette.get()));
  if (entries == nullptr) return nullptr;

  LoadedObject const object(LoadObject(nObject));
  std::span<BYTE const> triples;
  if (object.data() == nullptr || !FindLookup(*this, object, triples)) return nullptr;
  FillEntries(triples, entries, count);
  if (nBitsPerComponent == 1 && nHighValue != 0) m_bBlackIs1 = entries[0] != 0 ? 1 : 0;
  GlobalUnlock(palette.get());
  return palette.Release();
}

// Raw image data back into a bitmap.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/pixel_order.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <cstring>

namespace {

using sorrelin::RebuiltDib;

// Copies rows of RGB triples and exchanges the first and third byte of each, in the data too. Of a
// triple that the data cut short the missing bytes read as 0, and the byte that would go there is
// lost.
void TakeRgbRows(RebuiltDib& dib, std::span<BYTE> data, bool from_top) {
  for (uint64_t row = 0; row < dib.height() && !data.empty(); ++row) {
    std::span<BYTE> const source = data.first(std::min(data.size(), dib.payload()));
    BYTE* const to = dib.Row(from_top ? dib.height() - 1 - row : row);
    sorrelin::CopySwapped(to, source);
    // Kept: the caller's block is left with its bytes exchanged; a caller that decodes it again
    // gets the colours the other way round.
    std::memcpy(source.data(), to, source.size());
    std::fill(to + source.size(), to + dib.payload(), BYTE{0});
    data = data.subspan(source.size());
  }
}

}  // namespace

void* sorrelin::SessionState::CreateDIBFromUncompressedData(void* hData, DWORD nWidth,
                                                            DWORD nHeight, int nKind,
                                                            void* hPalette) {
  DWORD const kind = static_cast<DWORD>(nKind);
  sorrelin::LockedBlock const data(hData);
  if (data.bytes().empty() || !sorrelin::IsKnownKind(kind)) return nullptr;
  if (kind == sorrelin::kKindIndexed && hPalette == nullptr) return nullptr;

  int64_t const height = static_cast<LONG>(nHeight);
  RebuiltDib dib;
  if (!dib.Create(kind, nWidth, static_cast<uint64_t>(height < 0 ? -height : height))) {
    Fail(PDF_ERROR_MEMORY);
    // Kept: -1 where the other decoders give 0; callers of this one test for it.
    return INVALID_HANDLE_VALUE;
  }
  if (kind == sorrelin::kKindBilevel) {
    dib.SetColours(sorrelin::ColoursOfRawData(m_bBlackIs1 != 0, m_bDecodeNormal != 0));
  } else if (kind == sorrelin::kKindIndexed && !dib.CopyPalette(hPalette)) {
    return nullptr;
  }
  if (kind == sorrelin::kKindRgb) {
    if (dib.payload() != 0) TakeRgbRows(dib, data.bytes(), height >= 0);
  } else {
    sorrelin::RowWriter(dib, kind, height >= 0).Write(data.bytes());
  }
  return dib.Release();
}

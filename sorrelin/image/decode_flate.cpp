// Flate image data back into a bitmap.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/inflate_stream.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <memory>

namespace {

using sorrelin::RebuiltDib;

// Bytes that are inflated at a time: they stay in the processor's cache on their way to the rows.
// A multiple of 3, so that no RGB triple falls apart.
constexpr size_t kPieceBytes = 3 * 32768;

// Inflates into the rows. False if the data hold more than height * stride bytes, and for rows of
// no bytes; the padding of the rows counts, so what a stream holds beyond its rows is dropped up to
// there. Damaged data give what they hold before the damage.
bool InflateRows(std::span<BYTE const> data, RebuiltDib& dib, sorrelin::RowWriter rows) {
  if (dib.stride() == 0) return false;
  sorrelin::InflateStream stream(data);
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

void* sorrelin::SessionState::CreateDIBFromFLATEData(void* hData, DWORD nWidth, DWORD nHeight,
                                                     DWORD nKind, void* hPalette) {
  sorrelin::LockedBlock data(hData);
  if (!data || !sorrelin::CanBeRebuilt(data, nKind, hPalette)) return nullptr;

  int64_t const height = static_cast<LONG>(nHeight);
  RebuiltDib dib;
  if (!dib.Create(nKind, nWidth, static_cast<uint64_t>(height < 0 ? -height : height))) {
    return FailBitmap(PDF_ERROR_MEMORY);
  }
  if (nKind == sorrelin::kKindBilevel) {
    dib.SetColours(sorrelin::ColoursOfRawData(m_bBlackIs1 != 0, m_bDecodeNormal != 0));
  } else if (nKind == sorrelin::kKindIndexed && !dib.CopyPalette(hPalette)) {
    return FailBitmap(PDF_ERROR_PALETTE);
  }
  if (!InflateRows(data.bytes(), dib, sorrelin::RowWriter(dib, nKind, height >= 0))) {
    return FailBitmap(PDF_ERROR_DECOMPRESSION);
  }
  return dib.Release();
}

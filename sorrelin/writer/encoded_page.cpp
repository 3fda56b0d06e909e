// The objects of one page, in their fixed order: ProcSet, image, its length, for 8 bits the palette
// and its length, page, contents, their length.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/writer/encoded_page.h>

#include <cmath>
#include <cstdio>
#include <string>

namespace {

constexpr _CCITT_ENCODE_TYPE kGroup4{-1};
constexpr int kImageResource = 2;
constexpr double kPointsPerInch = 72.0;
constexpr DWORD kPageObjects = 6;
constexpr DWORD kPaletteObjects = 2;
constexpr DWORD kFinishingRows = 2;  // the catalog and the table's own row

int ProcSetKind(int32_t bits_per_pixel) {
  if (bits_per_pixel == 1) return 0;
  return bits_per_pixel == 8 ? 2 : 1;
}

// Whole points, modulo 2^32; 0 where the quotient has no finite value.
LONG Points(LONG pixels, DWORD dpi) {
  double const points = pixels * kPointsPerInch / dpi + 0.5;
  return std::isfinite(points) ? static_cast<LONG>(static_cast<int64_t>(points)) : 0;
}

sorrelin::PagePlacement Filling(POINT size) {
  constexpr int64_t kUnits = sorrelin::PagePlacement::kUnitsPerPoint;
  return {size, 0, 0, size.x * kUnits, size.y * kUnits};
}

// Four decimals, whatever the locale.
std::string Decimal(int64_t units) {
  constexpr int64_t kUnits = sorrelin::PagePlacement::kUnitsPerPoint;
  int64_t const size = units < 0 ? -units : units;
  char text[32];
  std::snprintf(text, sizeof text, "%s%lld.%04lld", units < 0 ? "-" : "",
                static_cast<long long>(size / kUnits), static_cast<long long>(size % kUnits));
  return text;
}

}  // namespace

POINT sorrelin::SessionState::CalculatePageSizeFromPixelsAndDPI(LONG nWidth, LONG nHeight,
                                                                DWORD nDpiX, DWORD nDpiY) {
  return {Points(nWidth, nDpiX), Points(nHeight, nDpiY)};
}

bool sorrelin::SessionState::WriteEncodedPage(EncodedPage const& page) {
  if (!BeginPage()) return false;
  WritePageObjects(page);
  return EndPage();
}

// The first page of an update goes behind the old document's last byte, after an empty line.
bool sorrelin::SessionState::BeginPage() {
  if (m_bAppendMode != 0 && m_bFirstAppendedPage != 0) {
    LONG high = 0;
    DWORD const end = sorrelin::ChannelSeek(m_hFile, 0, &high, FILE_END);
    // Offsets have 32 bits: an end that needs more would lead back into the old bytes.
    m_nFilePos = high == 0 ? end : INVALID_SET_FILE_POINTER;
    if (m_nFilePos == INVALID_SET_FILE_POINTER) return Fail(PDF_ERROR_SYSTEM) != 0;
    WriteToPDFFile("\n", 1);
  }
  PDF_SetLastError(PDF_ERROR_NONE);
  return true;
}

// Kept: a failed first page counts as begun, so the seek is not repeated for the next one.
bool sorrelin::SessionState::EndPage() {
  if (m_bAppendMode != 0) m_bFirstAppendedPage = 0;
  return m_nLastError == PDF_ERROR_NONE;
}

void sorrelin::SessionState::WritePageObjects(sorrelin::EncodedPage const& page) {
  // Clears the code, so it comes before the first write: none that fails may be forgotten.
  _FILTER const filter = FilterOf(page);
  if (!HasRoomForPage(page.bits_per_pixel)) return;
  DWORD const proc_set = CreateProcSetObject(ProcSetKind(page.bits_per_pixel), 0);
  if (proc_set == 0) return;
  DWORD const image = WriteImageObjects(page, filter);
  if (image == 0) return;
  POINT const full = CalculatePageSizeFromPixelsAndDPI(
      page.width, page.height, static_cast<DWORD>(page.dpi.x), static_cast<DWORD>(page.dpi.y));
  sorrelin::PagePlacement const placement = page.placement.value_or(Filling(full));
  POINT const size = placement.page;
  // Kept: a picture of less than half a point gets no page, and sets no error.
  if (size.x == 0 || size.y == 0) return;
  char name[16];
  std::snprintf(name, sizeof name, "Im%d", static_cast<int>(image));
  if (CreatePageObject(GetPagesRootObjectNr(), kImageResource, image, proc_set, name, size) == 0) {
    return;
  }
  if (m_bAppendMode != 0) NoteAppendedPage();
  WritePageContents(name, placement);
}

// A page that no longer fits is refused before its first byte, so that the document can always be
// finished.
bool sorrelin::SessionState::HasRoomForPage(int32_t nBitsPerPixel) {
  DWORD const objects = nBitsPerPixel == 8 ? kPageObjects + kPaletteObjects : kPageObjects;
  if (m_nCurrentObject < kObjectRows - objects - kFinishingRows) return true;
  return Fail(PDF_ERROR_NEW_PAGE_OBJECT) != 0;
}

// Kept: the record of a negative size stays unfilled; code 16 stands until a step sets another.
_FILTER sorrelin::SessionState::FilterOf(sorrelin::EncodedPage const& page) {
  _FILTER filter{page.compression, {}};
  if (page.bits_per_pixel == 1) {
    SetCCITTFilterParams(&filter.CcittParams, page.width, page.height, kGroup4, 0, 0, 0, 1, 0);
  }
  return filter;
}

DWORD sorrelin::SessionState::WriteImageObjects(sorrelin::EncodedPage const& page,
                                                _FILTER const& filter) {
  _IMAGE_PARAMETERS const params{page.width, page.height, page.bits_per_pixel,
                                 page.decode_normal ? 1 : 0, 0};
  DWORD const image = CreateImageXObject(params, page.data, page.size, filter);
  if (image == 0 || page.bits_per_pixel != 8) return image;
  return WriteDataStreamObject(page.palette, 0) != 0 ? image : 0;
}

void sorrelin::SessionState::NoteAppendedPage() {
  if (m_nAppendedPages < kPageSlots) m_AppendedPageObjects[m_nAppendedPages] = m_nCurrentObject;
  ++m_nAppendedPages;
}

void sorrelin::SessionState::WritePageContents(char const* szImage,
                                               sorrelin::PagePlacement const& at) {
  if (BeginStream() == 0) return;
  WriteToPDFFile("1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm", 1);
  WriteFormatted(1, "%s 0.0000 0.0000  %s %s %s cm", Decimal(at.width).c_str(),
                 Decimal(at.height).c_str(), Decimal(at.x).c_str(), Decimal(at.y).c_str());
  WriteFormatted(1, "/%s Do", szImage);
  if (EndStream() != 0) WriteStreamLengthObject();
}

// Doors of the session: bitmaps as pages.
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/image/coded_bitmap.h>
#include <sorrelin/platform/wide_string.h>
#include <sorrelin/writer/checkpoint.h>
#include <sorrelin/writer/creation_time.h>
#include <sorrelin/writer/encoded_page.h>
#include <sorrelin/writer/page_objects.h>

using sorrelin::CodedBitmap;
using sorrelin::Coding;
using sorrelin::Door;
using sorrelin::Draft;
using sorrelin::EncodedPage;
using sorrelin::Result;
using sorrelin::SessionState;
using sorrelin::Status;
using sorrelin::ToWide;

namespace {

// Adds the page, or takes the failure of its coding. Kept: a failed first page counts as begun, so
// the seek of an update is not repeated for the next one; and a page has failed if anything on its
// way left a code.
bool AddPage(SessionState& state, Status coded, EncodedPage const& page) {
  Draft const draft = state.Document();
  bool begun = false;
  Status const status = WithCheckpoint(draft, [&] {
    Status const place = BeginPage(draft);
    begun = place.ok();
    if (!begun) return place;
    return coded.ok() ? WritePageObjects(draft, page) : coded;
  });
  if (begun) state.m_nLastError = PDF_ERROR_NONE;
  static_cast<void>(state.Report(status));
  bool const taken_back = draft.output.short_of_memory;
  if (begun && !taken_back && draft.update.active != 0) draft.update.first_page = 0;
  return begun && state.m_nLastError == PDF_ERROR_NONE;
}

int SaveBitmap(SessionState* session, void* bitmap, Coding const& coding) {
  return Door(session, [&](SessionState& state) {
    Result<CodedBitmap> const coded = CodeBitmap(bitmap, coding);
    CodedBitmap const& picture = coded.value();
    sorrelin::LockedBlock const data(picture.data.get());
    EncodedPage page;
    page.width = picture.size.x;
    page.height = picture.size.y;
    page.bits_per_pixel = picture.bits;
    page.compression = coding.compression;
    page.decode_normal = picture.first_is_black;
    page.dpi = picture.dpi;
    page.data = data.bytes().data();
    page.size = picture.bytes;
    page.palette = picture.palette.get();
    bool const unreadable = coded.ok() && !data;
    return AddPage(state, unreadable ? Status::Failed(PDF_ERROR_MEMORY) : coded.status(), page);
  });
}

}  // namespace

int CCreatePDF::SaveDIBAsPDFPage(void* hDIB, char const* szCodecLibrary) {
  return Door(m_pState, [&](SessionState&) {
    return SaveDIBAsPDFPageW(hDIB, ToWide(szCodecLibrary).c_str());
  });
}

int CCreatePDF::SaveDIBAsPDFPageW(void* hDIB, WCHAR const* szCodecLibrary) {
  return SaveBitmap(m_pState, hDIB, {szCodecLibrary, PDF_COMPRESSION_CCITT, 0});
}

int CCreatePDF::SaveDIBAsColorPDFPage(void* hDIB, char const* szCodecLibrary, DWORD nCompression,
                                      int nQuality) {
  return Door(m_pState, [&](SessionState&) {
    char const* const library = szCodecLibrary != nullptr ? szCodecLibrary : "";
    return SaveDIBAsColorPDFPageW(hDIB, ToWide(library).c_str(), nCompression, nQuality);
  });
}

int CCreatePDF::SaveDIBAsColorPDFPageW(void* hDIB, WCHAR const* szCodecLibrary, DWORD nCompression,
                                       int nQuality) {
  return SaveBitmap(m_pState, hDIB, {szCodecLibrary, nCompression, nQuality});
}

POINT CCreatePDF::CalculatePageSizeFromPixelsAndDPI(LONG nWidth, LONG nHeight, DWORD nDpiX,
                                                    DWORD nDpiY) {
  return sorrelin::PageSize(nWidth, nHeight, nDpiX, nDpiY);
}

bool sorrelin::WriteEncodedPage(CCreatePDF& session, EncodedPage const& page) {
  return Door(SessionAccess::Of(session),
              [&](SessionState& state) { return AddPage(state, Status::Ok(), page); });
}

void sorrelin::SetCreationTime(CCreatePDF& session, SYSTEMTIME const& time) {
  SessionState* const state = SessionAccess::Of(session);
  if (state != nullptr) state->m_pReader->m_CreationTime = time;
}

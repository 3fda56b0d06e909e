// Access to the state of a session.
#ifndef TESTS_SUPPORT_SESSION_PROBE_H_
#define TESTS_SUPPORT_SESSION_PROBE_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/session_state.h>

struct SessionProbe {
  using State = sorrelin::SessionState;
  static constexpr DWORD kObjectRows = State::kObjectRows;
  static constexpr DWORD kPageSlots = State::kPageSlots;

  static State& Of(CCreatePDF& s) { return *sorrelin::SessionAccess::Of(s); }

  static sorrelin::FileChannel*& Channel(CCreatePDF& s) { return Of(s).m_Output.channel; }
  static sorrelin::ReaderState& Reader(CCreatePDF& s) { return *Of(s).m_pReader; }
  static std::shared_ptr<sorrelin::ReaderState>& ReaderPointer(CCreatePDF& s) {
    return Of(s).m_pReader;
  }
  // Gives session and side record a channel, as opening does.
  static void SetChannel(CCreatePDF& s, sorrelin::FileChannel* channel) {
    Channel(s) = channel;
    Reader(s).file.SetChannel(channel, sorrelin::DocumentFile::Growth::kFixed);
  }
  // The source of values in other objects.
  static sorrelin::ObjectSource* Source(CCreatePDF& s) { return &Reader(s).objects; }
  static sorrelin::ObjectEntry& Row(CCreatePDF& s, DWORD object) {
    return Of(s).m_Objects.Change(object);
  }
  static DWORD& FilePos(CCreatePDF& s) { return Of(s).m_Output.offset; }
  static DWORD& TotalPages(CCreatePDF& s) { return Of(s).m_Pages.count(); }
  static DWORD ObjectsInFile(CCreatePDF& s) { return Of(s).m_Objects.rows_in_document(); }
  static void SetObjectsInFile(CCreatePDF& s, DWORD rows) {
    Of(s).m_Objects.SetRowsInDocument(rows);
  }
  static DWORD& AppendMode(CCreatePDF& s) { return Of(s).m_Update.active; }
  static DWORD& FirstAppendedPage(CCreatePDF& s) { return Of(s).m_Update.first_page; }
  static DWORD& AppendedPages(CCreatePDF& s) { return Of(s).m_Update.page_count; }
  static DWORD& AppendedPage(CCreatePDF& s, DWORD index) {
    return Of(s).m_Update.pages.Change(index);
  }
  static DWORD& BlackIs1(CCreatePDF& s) { return Of(s).m_bBlackIs1; }
  static DWORD& DecodeNormal(CCreatePDF& s) { return Of(s).m_bDecodeNormal; }
  static DWORD& ProcSetFlags(CCreatePDF& s) { return Of(s).m_nProcSetFlags; }
  static DWORD& PagesRoot(CCreatePDF& s) { return Of(s).m_Facts.pages_root; }
  static DWORD& Catalog(CCreatePDF& s) { return Of(s).m_Facts.catalog; }
  static DWORD& CatalogGeneration(CCreatePDF& s) { return Of(s).m_Facts.catalog_generation; }
  static DWORD& Info(CCreatePDF& s) { return Of(s).m_Facts.info; }
  static DWORD& InfoGeneration(CCreatePDF& s) { return Of(s).m_Facts.info_generation; }
  static DWORD& TrailerSize(CCreatePDF& s) { return Of(s).m_Facts.trailer_size; }
  static DWORD& MaxSectionOffset(CCreatePDF& s) { return Of(s).m_Facts.max_section_offset; }
  static WCHAR* Creator(CCreatePDF& s) { return Of(s).m_szCreator; }
  static char* TrailerId(CCreatePDF& s) { return Of(s).m_Facts.trailer_id; }
  static char* TrailerEncrypt(CCreatePDF& s) { return Of(s).m_Facts.trailer_encrypt; }

  // Layout defaults in declaration order, which nothing reads but callers see in the object.
  static void LayoutDefaults(CCreatePDF& s, DWORD (&values)[6]) {
    values[0] = Of(s).m_nLayoutDefault0;
    values[1] = Of(s).m_nDefaultPageHeight;
    values[2] = Of(s).m_nDefaultPageWidth;
    values[3] = Of(s).m_nLayoutDefault1;
    values[4] = Of(s).m_nLayoutDefault2;
    values[5] = Of(s).m_nLayoutDefault3;
  }
};

#endif  // TESTS_SUPPORT_SESSION_PROBE_H_

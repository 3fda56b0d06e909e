// Looks into, and sets, the private members of a session.
#ifndef TESTS_SUPPORT_SESSION_PROBE_H_
#define TESTS_SUPPORT_SESSION_PROBE_H_

#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/reader_state.h>
#include <sorrelin/frame/session.h>

struct SessionProbe {
  static constexpr DWORD kObjectRows = CCreatePDF::kObjectRows;
  static constexpr DWORD kPageSlots = CCreatePDF::kPageSlots;

  static sorrelin::FileChannel*& Channel(CCreatePDF& s) { return s.m_hFile; }
  static sorrelin::ReaderState& Reader(CCreatePDF& s) { return *s.m_pReader; }
  static sorrelin::ReaderState*& ReaderPointer(CCreatePDF& s) { return s.m_pReader; }
  static ObjectEntry& Row(CCreatePDF& s, DWORD object) { return s.m_Objects[object]; }
  static DWORD& FilePos(CCreatePDF& s) { return s.m_nFilePos; }
  static DWORD& TotalPages(CCreatePDF& s) { return s.m_nTotalPages; }
  static DWORD& ObjectsInFile(CCreatePDF& s) { return s.m_nObjectsInFile; }
  static DWORD& AppendMode(CCreatePDF& s) { return s.m_bAppendMode; }
  static DWORD& FirstAppendedPage(CCreatePDF& s) { return s.m_bFirstAppendedPage; }
  static DWORD& AppendedPages(CCreatePDF& s) { return s.m_nAppendedPages; }
  static DWORD& AppendedPage(CCreatePDF& s, DWORD index) { return s.m_AppendedPageObjects[index]; }
  static DWORD& BlackIs1(CCreatePDF& s) { return s.m_bBlackIs1; }
  static DWORD& DecodeNormal(CCreatePDF& s) { return s.m_bDecodeNormal; }
  static DWORD& ProcSetFlags(CCreatePDF& s) { return s.m_nProcSetFlags; }
  static DWORD& PagesRoot(CCreatePDF& s) { return s.m_nPagesRootObject; }
  static DWORD& Catalog(CCreatePDF& s) { return s.m_nCatalogObject; }
  static DWORD& CatalogGeneration(CCreatePDF& s) { return s.m_nCatalogGeneration; }
  static DWORD& Info(CCreatePDF& s) { return s.m_nInfoObject; }
  static DWORD& InfoGeneration(CCreatePDF& s) { return s.m_nInfoGeneration; }
  static DWORD& TrailerSize(CCreatePDF& s) { return s.m_nTrailerSize; }
  static DWORD& MaxSectionOffset(CCreatePDF& s) { return s.m_nMaxSectionOffset; }
  static WCHAR* Creator(CCreatePDF& s) { return s.m_szCreator; }
  static char* TrailerId(CCreatePDF& s) { return s.m_szTrailerID; }
  static char* TrailerEncrypt(CCreatePDF& s) { return s.m_szTrailerEncrypt; }

  // Layout defaults in declaration order, which nothing reads but callers see in the object.
  static void LayoutDefaults(CCreatePDF& s, DWORD (&values)[6]) {
    values[0] = s.m_nLayoutDefault0;
    values[1] = s.m_nDefaultPageHeight;
    values[2] = s.m_nDefaultPageWidth;
    values[3] = s.m_nLayoutDefault1;
    values[4] = s.m_nLayoutDefault2;
    values[5] = s.m_nLayoutDefault3;
  }
};

#endif  // TESTS_SUPPORT_SESSION_PROBE_H_

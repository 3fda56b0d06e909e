// What a session holds behind its pointer: the writer's and the reader's members, and the
// operations over them. Not installed.
#ifndef SORRELIN_FRAME_SESSION_STATE_H_
#define SORRELIN_FRAME_SESSION_STATE_H_

#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/object_entry.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/writer/draft.h>

#include <memory>

namespace sorrelin {

class DibView;
class OwnedBlock;

// Copies share the channel and the side record.
struct SessionState {
  SessionState();

  // Bitmap access
  int CheckDIBPaletteOrder(void* hDIB, int& nOrder);

  // Encoders
  void* ConvertDIB2PDFImage(void* hDIB, DWORD& nSize, DWORD nCompression,
                            char const* szCodecLibrary, int nQuality);
  void* ConvertDIB2PDFImageW(void* hDIB, DWORD& nSize, DWORD nCompression,
                             WCHAR const* szCodecLibrary, int nQuality);
  void* ConvertDIB2UncompressedPDFImage(void* hDIB, DWORD& nSize);
  void* ConvertDIB2FlatePDFImage(void* hDIB, DWORD& nSize, DWORD nCompression, int nLevel);
  void* ConvertDIB2RLEPDFImage(void* hDIB, DWORD& nSize, DWORD nCompression);
  void RLEEncriptLine(BYTE* pLine, DWORD nLength, BYTE* pOut, DWORD& nOutSize);
  void* ConvertDIB2CcittPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary);
  void* ConvertDIB2CcittPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary);
  void* ConvertDIB2CcittPDFImageFileW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary);
  void* ConvertDIB2DctJpegPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary,
                                   int nQuality, DWORD nCompression);
  void* ConvertDIB2DctJpegPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary,
                                    int nQuality, DWORD nCompression);
  void* ConvertDIB2DctJpegPDFImageFileW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary,
                                        int nQuality, DWORD nCompression);

  int GetDIBBitsPerPixel(void* hDIB);
  POINT GetDIBDPI(void* hDIB);
  POINT GetDIBImageSize(void* hDIB);
  void* ExtractPaletteFromDIB(void* hDIB, DWORD* pSize);

  // Decoders
  void* CreateDIBFromUncompressedData(void* hData, DWORD nWidth, DWORD nHeight, int nKind,
                                      void* hPalette);
  void* CreateDIBFromFLATEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind,
                               void* hPalette);
  void* CreateDIBFromRLEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind, void* hPalette);
  int DecriptRLEData(BYTE* pData, uint64_t nSize, void* hDIB);
  void* CreateDIBFromCCITTData(void* hData, DWORD nWidth, DWORD nHeight);
  void* CreateDIBFromCCITTDataFile(void* hData, DWORD nWidth, DWORD nHeight);
  void* CreateDIBFromJPEGData(void* hData);
  void* CreateDIBFromJPEGDataFile(void* hData);

  static constexpr DWORD kObjectRows = ObjectTable::kRows;
  static constexpr DWORD kPageSlots = PageList::kSlots;
  static constexpr DWORD kCreatorUnits = 260;

  // Sets the code and returns 0.
  DWORD Fail(DWORD nError);
  // Sets the code that an operation noted, then that of its outcome, if any. Whether it succeeded.
  bool Report(Status status);

  // The way to the objects of the open document.
  ObjectLoader Objects();

  // The same for a result: its value, or 0.
  template <typename T>
  T Take(Result<T> const& result) {
    return Report(result.status()) ? result.value() : T();
  }

  // The document under way.
  Draft Document() { return {m_Output, m_Objects, m_Pages, m_Facts, m_Update, *m_pReader}; }
  // Takes a number for the pages root and remembers it as that.
  DWORD ReservePagesRoot();

  void TakeChannel(FileChannel* channel, DocumentFile::Growth growth);
  // Close what is open; a document in memory is freed or handed over.
  void Close();
  void CloseTake(int64_t* data, DWORD* size);
  void CloseOpenDocument();

  // Encoders
  void* FailBlock(DWORD nError);
  void* EncodedBlock(DWORD nError, OwnedBlock& block);
  void* EncodeRunLengthRows(DibView const& dib, DWORD& nSize);

  // Decoders
  // Sets the code and returns 0.
  void* FailBitmap(DWORD nError);
  void* DecodedBitmap(DWORD nError, OwnedBlock& bitmap);
  OwnedBlock BuildCcittBitmap(DWORD nWidth, DWORD nHeight);

  // Defaults of the page layout, which no operation reads.
  DWORD m_nLayoutDefault0 = 10;
  DWORD m_nDefaultPageHeight = 792;  // points
  DWORD m_nDefaultPageWidth = 612;   // points
  DWORD m_nLayoutDefault1 = 12;
  DWORD m_nLayoutDefault2 = 1;
  DWORD m_nLayoutDefault3 = 40;
  Output m_Output;
  WCHAR m_szCreator[kCreatorUnits] = {};
  ObjectTable m_Objects;
  PageList m_Pages;
  DWORD m_nLastError = PDF_ERROR_NOT_INITIALIZED;
  DocumentFacts m_Facts;
  DWORD m_bBlackIs1 = 0;
  DWORD m_bDecodeNormal = 1;
  DWORD m_nProcSetFlags = 0;  // 1: ImageB, 2: ImageI, 4: ImageC
  Update m_Update;
  std::shared_ptr<ReaderState> m_pReader;
};

// The way from a session to its state, which is null where memory was short at its making.
struct SessionAccess {
  static SessionState* Of(CCreatePDF& session) { return session.m_pState; }

  // The session's end leaves its side record allocated.
  static void LeaveSideRecord(CCreatePDF& session) {
    SessionState* const state = session.m_pState;
    if (state != nullptr && state->m_pReader) state->m_pReader->m_bOutlivesSession = true;
  }
};

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_SESSION_STATE_H_

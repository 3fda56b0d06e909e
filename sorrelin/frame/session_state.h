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
#include <sorrelin/platform/wide_string.h>

#include <initializer_list>
#include <memory>
#include <string>

namespace sorrelin {

struct EncodedPage;
struct PagePlacement;
class DibView;
class OwnedBlock;
using InfoString = WideString ReaderState::*;  // one of the four information strings

// Copies share the channel and the side record.
struct SessionState {
  SessionState();

  // Errors
  void PDF_SetLastError(DWORD nError);
  DWORD PDF_GetLastError();

  // Writer primitives
  DWORD ObjectStart(int bDict, int bEol);
  DWORD ObjectStart(DWORD nObject, int bDict, int bEol);
  DWORD ObjectStartNewGen(DWORD nObject, int bDict, int bEol, int bNewGeneration);
  int ObjectEnd(int bDict);
  int ObjectExistsAlready(DWORD nObject);
  DWORD GetCurrentObject();
  void SetCurrentObject(DWORD nObject);
  DWORD GetNextObject();
  DWORD ReserveOneObject();
  DWORD ReservePagesRootObject();
  DWORD BeginStream();
  int EndStream();
  void MarkStreamBegining();
  void MarkStreamEnd();
  DWORD GetStreamLength();
  DWORD WriteStreamLengthObject();
  DWORD WriteDataStreamObject(void* hData, DWORD nBytes);
  int WriteToPDFFile(char const* szText, int bEol);
  DWORD WriteRawDataToPDFFile(BYTE const* pData, DWORD nBytes);
  DWORD WriteEolToPDFFile();
  void SetChar13(int bUseChar13);
  int UseChar13();
  void InitObjectList();
  void InitPageObjectsList();
  DWORD GetPageObjectNumber(DWORD nPage);
  DWORD GetCurrentPageNumber();
  DWORD GetNumberOfPages();
  DWORD GetTotalPageNumber();
  DWORD GetCatalogObjectNr();
  DWORD GetOutlinesObjectNr();
  DWORD GetPagesRootObjectNr();

  // Document skeleton
  int WritePDFHeader(char const* szTitle, char const* szCreator);
  DWORD CreateOutlinesObject(DWORD nCount);
  DWORD CreatePagesRootObject();
  DWORD CreatePageObject(DWORD nParent, int nResourceType, DWORD nResourceObject,
                         DWORD nProcSetObject, char const* szResourceName, POINT ptSize);
  DWORD CreateProcSetObject(int nImageType, int bText);
  DWORD CreateFontObject();
  DWORD CreateCatalogObject(DWORD nPagesRoot, DWORD nOutlines);

  // Create and finish
  int CreatePDF(char const* szFileName);
  int CreatePDFW(WCHAR const* szFileName);
  int CreatePDFFile(char const* szFileName);
  int CreatePDFFileW(WCHAR const* szFileName);
  int CreatePDFInMemory(int64_t pAppendTo, DWORD nSize);
  int CreatePDFFileInMemory(int64_t pAppendTo, DWORD nSize);
  int WriteXref();
  int FinishPDF();
  int FinishPDFInMemory(int64_t* ppData, DWORD* pSize);
  void ClosePDFFile();
  void ClosePDFFileInMemory(int64_t* ppData, DWORD* pSize);

  // Pages
  int SaveDIBAsPDFPage(void* hDIB, char const* szCodecLibrary);
  int SaveDIBAsPDFPageW(void* hDIB, WCHAR const* szCodecLibrary);
  int SaveDIBAsColorPDFPage(void* hDIB, char const* szCodecLibrary, DWORD nCompression,
                            int nQuality);
  int SaveDIBAsColorPDFPageW(void* hDIB, WCHAR const* szCodecLibrary, DWORD nCompression,
                             int nQuality);
  POINT CalculatePageSizeFromPixelsAndDPI(LONG nWidth, LONG nHeight, DWORD nDpiX, DWORD nDpiY);
  int CheckDIBPaletteOrder(void* hDIB, int& nOrder);

  // Image objects
  DWORD CreateImageXObject(_IMAGE_PARAMETERS Params, BYTE const* pData, DWORD nSize,
                           _FILTER Filter);
  int SetCCITTFilterParams(_CCITT_FILTER_PARAMS* pParams, int nColumns, int nRows,
                           _CCITT_ENCODE_TYPE K, int bBlackIs1, int bEndOfLine,
                           int bEncodedByteAlign, int bEndOfBlock, int nDamagedRowsBeforeError);
  int IsCompession_NOT_SPECIFIED(DWORD nCompression);
  int IsCompession_NO_COMPRESSION(DWORD nCompression);
  int IsCompession_ASCII_HEX_DECODE(DWORD nCompression);
  int IsCompession_ASCII_85_DECODE(DWORD nCompression);
  int IsCompession_LZW_DECODE(DWORD nCompression);
  int IsCompession_FLAT_DECODE(DWORD nCompression);
  int IsCompession_RUNLENGTH_DECODE(DWORD nCompression);
  int IsCompession_CCITT_FAX_DECODE(DWORD nCompression);
  int IsCompession_DCT_JPEG_DECODE(DWORD nCompression);

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

  // Bitmap access
  int GetDIBBitsPerPixel(void* hDIB);
  POINT GetDIBDPI(void* hDIB);
  POINT GetDIBImageSize(void* hDIB);
  void* ExtractPaletteFromDIB(void* hDIB, DWORD* pSize);

  // Information strings
  int SetTitleA(char const* szText);
  int SetTitleW(WCHAR const* szText);
  int GetTitleA(char* szBuffer, DWORD* pnSize);
  int GetTitleW(WCHAR* szBuffer, DWORD* pnSize);
  int SetAuthorA(char const* szText);
  int SetAuthorW(WCHAR const* szText);
  int GetAuthorA(char* szBuffer, DWORD* pnSize);
  int GetAuthorW(WCHAR* szBuffer, DWORD* pnSize);
  int SetSubjectA(char const* szText);
  int SetSubjectW(WCHAR const* szText);
  int GetSubjectA(char* szBuffer, DWORD* pnSize);
  int GetSubjectW(WCHAR* szBuffer, DWORD* pnSize);
  int SetKeywordsA(char const* szText);
  int SetKeywordsW(WCHAR const* szText);
  int GetKeywordsA(char* szBuffer, DWORD* pnSize);
  int GetKeywordsW(WCHAR* szBuffer, DWORD* pnSize);

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

  // Update
  int CreatePagesRootObjectForAppend();
  int WriteXrefForAppend();
  void InitAppendedPageObjectsList();

  static constexpr DWORD kObjectRows = ObjectTable::kRows;
  static constexpr DWORD kPageSlots = PageList::kSlots;
  static constexpr DWORD kCreatorUnits = 260;

  // Sets the code and returns 0.
  DWORD Fail(DWORD nError);
  // Sets the code that an operation noted, then that of its outcome, if any. Whether it succeeded.
  bool Report(Status status);

  // The way to the objects of the open document.
  ObjectLoader Objects();

  // Writer primitives
  DWORD WriteToChannel(BYTE const* pData, DWORD nBytes);
  bool WriteLines(std::initializer_list<char const*> lines);
  // One line by printf's rules. A line of 1,024 bytes or more ends the process.
#if defined(__GNUC__)
  __attribute__((format(printf, 3, 4)))
#endif
  bool
  WriteFormatted(int bEol, char const* szFormat, ...);
  bool WriteObjectHeader(DWORD nObject, int bDict, int bEol);
  bool WriteBlock(void* hData, DWORD nBytes);
  bool WriteZeros(DWORD nBytes);
  bool FinishDataStream();
  void SetPageObjectNumber(DWORD nPage, DWORD nObject);

  // Document skeleton
  bool WriteTitle(char const* szTitle);
  bool WriteInfoString(char const* szFormat, WideString const& text);
  bool WritePageResource(int nType, DWORD nObject, char const* szName);

  // Create and finish
  void CloseOpenDocument();
  void EnterMode(bool update);
  int TakeChannel(FileChannel* pChannel);
  bool StartDocument();
  bool FinishObjects();
  void ForgetChannel();
  bool WriteXrefEntries(DWORD nTable);
  void AddXrefEntry(std::string& entries, DWORD nOffset, DWORD nGeneration, bool in_use) const;
  bool WriteText(std::string const& text);
  bool WriteNewTrailer(DWORD nTable);
  bool WriteXrefOffset(DWORD nTable);

  // Update
  bool StartUpdate();
  bool RefuseObjectStreams();
  bool ReadOldPagesRoot(std::string& text);
  bool ReadOldPageCount(std::string& text, DWORD& nCount);
  bool WriteUpdatedEntries(DWORD nTable);
  bool WriteUpdatedTrailer(DWORD nTable);

  // Pages
  bool WriteEncodedPage(EncodedPage const& page);
  bool BeginPage();
  bool EndPage();
  bool DescribeBitmap(void* hDIB, EncodedPage& page);
  bool IsPairRefused(int32_t nBitsPerPixel, DWORD nCompression);
  void EncodeAndWrite(void* hDIB, WCHAR const* szCodecLibrary, int nQuality, EncodedPage& page);
  void WritePageObjects(EncodedPage const& page);
  bool HasRoomForPage(int32_t nBitsPerPixel);
  _FILTER FilterOf(EncodedPage const& page);
  DWORD WriteImageObjects(EncodedPage const& page, _FILTER const& filter);
  void NoteAppendedPage();
  void WritePageContents(char const* szImage, PagePlacement const& at);

  // Image objects
  bool WriteImageDictionary(_IMAGE_PARAMETERS const& params, _FILTER const& filter);
  bool WriteColorSpace(_IMAGE_PARAMETERS const& params);
  bool WriteFilter(_IMAGE_PARAMETERS const& params, _FILTER const& filter);
  bool WriteCcittFilter(_IMAGE_PARAMETERS const& params, _CCITT_FILTER_PARAMS const& ccitt);

  // Encoders
  void* FailBlock(DWORD nError);
  void* EncodedBlock(DWORD nError, OwnedBlock& block);
  void* EncodeRunLengthRows(DibView const& dib, DWORD& nSize);

  // Decoders
  // Sets the code and returns 0.
  void* FailBitmap(DWORD nError);
  void* DecodedBitmap(DWORD nError, OwnedBlock& bitmap);
  OwnedBlock BuildCcittBitmap(DWORD nWidth, DWORD nHeight);

  // Information strings
  int SetInfoString(InfoString pString, WCHAR const* szText);
  int GetInfoStringA(InfoString pString, char* szBuffer, DWORD* pnSize);
  int GetInfoStringW(InfoString pString, WCHAR* szBuffer, DWORD* pnSize);

  // Defaults of the page layout, which no operation reads.
  DWORD m_nLayoutDefault0 = 10;
  DWORD m_nDefaultPageHeight = 792;  // points
  DWORD m_nDefaultPageWidth = 612;   // points
  DWORD m_nLayoutDefault1 = 12;
  DWORD m_nLayoutDefault2 = 1;
  DWORD m_nLayoutDefault3 = 40;
  FileChannel* m_hFile;  // -1: none is open; 0: a document was rejected
  DWORD m_nFilePos = 0;  // offset of the next byte to be written
  DWORD m_nStreamBegin = 0;
  DWORD m_nStreamEnd = 0;
  WCHAR m_szCreator[kCreatorUnits] = {};
  DWORD m_nCurrentObject = 0;  // the highest object number handed out
  ObjectTable m_Objects;
  PageList m_Pages;
  DWORD m_nCurrentPage = 0;  // pages added by this session
  int32_t m_bUseChar13 = 0;
  DWORD m_nLastError = PDF_ERROR_NOT_INITIALIZED;
  DocumentFacts m_Facts;
  DWORD m_bBlackIs1 = 0;
  DWORD m_bDecodeNormal = 1;
  DWORD m_nProcSetFlags = 0;  // 1: ImageB, 2: ImageI, 4: ImageC
  DWORD m_bAppendMode = 0;
  DWORD m_bFirstAppendedPage = 0;
  DWORD m_nOldCatalogObject = 0;
  DWORD m_nOldPagesRootObject = 0;
  DWORD m_AppendedPageObjects[kPageSlots] = {};
  DWORD m_nAppendedPages = 0;
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

// CCreatePDF, the session: one output or input channel, the object table of the document in hand,
// its page list, and the facts of a document that was read, all behind one pointer.
//
// Results: non-zero for success, 0 for failure after PDF_SetLastError; methods that make objects
// return the object number, those that make blocks a handle (0 or -1 is failure). Error codes and
// compression values have names in pdf.h. Handles that come back are the caller's (GlobalFree);
// handles that are passed in stay the caller's. A session serves one document in its life, and one
// thread at a time.
#ifndef SORRELIN_FRAME_SESSION_H_
#define SORRELIN_FRAME_SESSION_H_

#include <sorrelin/frame/image_records.h>
#include <sorrelin/frame/pdf.h>
#include <cstdint>

namespace sorrelin {
struct SessionAccess;
struct SessionState;
}  // namespace sorrelin

// The session. What the flat functions of pdf.h do, its methods do.
class SORRELIN_EXPORT CCreatePDF {
 public:
  // Session
  CCreatePDF();  // nothing is open
  // Does not close the channel: ClosePDFFile does.
  ~CCreatePDF();
  // Copies the state; both sessions then own the channel and the side record.
  CCreatePDF& operator=(CCreatePDF const&);
  CCreatePDF(CCreatePDF const&) = delete;

  // Errors

  // Stores the code of a failure, and gives it back: 32 on a fresh session.
  void PDF_SetLastError(DWORD nError);
  DWORD PDF_GetLastError();

  // See pdf_GetLastPDFErrorText. 1, or 0 for a null buffer.
  int GetLastPDFErrorText(char* szBuffer);

  // Writer primitives

  // Takes the next object number and writes "N 0 obj", then "<<" if bDict. bEol ends the first
  // line. Error 40 when the object table is full.
  DWORD ObjectStart(int bDict, int bEol);
  // The same under a given number; error 11 if its row is taken.
  DWORD ObjectStart(DWORD nObject, int bDict, int bEol);
  // Rewrites an object whose row is taken (else error 11), one generation up if bNewGeneration.
  DWORD ObjectStartNewGen(DWORD nObject, int bDict, int bEol, int bNewGeneration);
  // Writes ">>" if bDict, then "endobj".
  int ObjectEnd(int bDict);
  // 1 if the object's row is taken, else 0.
  int ObjectExistsAlready(DWORD nObject);
  // The highest object number handed out.
  DWORD GetCurrentObject();
  // Overwrites that number; the next object gets the one after it.
  void SetCurrentObject(DWORD nObject);
  // The number that the next object gets.
  DWORD GetNextObject();
  // Takes a number and writes nothing. Error 40 when the object table is full.
  DWORD ReserveOneObject();
  // Takes a number for the pages root and remembers it as that.
  DWORD ReservePagesRootObject();
  // Opens a stream object whose only key is /Length, in an object that must come next.
  DWORD BeginStream();
  // Marks the end of that stream and closes its object.
  int EndStream();

  // Take the place of the next byte for the begin or the end of a stream.
  void MarkStreamBegining();
  void MarkStreamEnd();

  // Bytes between the two marks.
  DWORD GetStreamLength();
  // Writes the length object of the stream last marked; error 14 if it is empty.
  DWORD WriteStreamLengthObject();
  // Writes a stream object from a memory block: nBytes of it, or all with 0. Error 14 for no data.
  DWORD WriteDataStreamObject(void* hData, DWORD nBytes);
  // Writes a text, and an end of line if bEol. 2 with CR LF line ends, else 1; 0 with error 7 for
  // null, 8 for an empty text, 2 without a channel, 1 for a failed write.
  int WriteToPDFFile(char const* szText, int bEol);
  // Writes bytes and returns their number; 0 with error 7, 8, 2 or 1 as above.
  DWORD WriteRawDataToPDFFile(BYTE const* pData, DWORD nBytes);
  // Writes one end of line. 1; 0 with error 2 or 1.
  DWORD WriteEolToPDFFile();
  // Not 0: lines end with CR LF. 0, as after construction: with LF.
  void SetChar13(int bUseChar13);
  // What SetChar13 was given last.
  int UseChar13();

  // Clear the object table and the list of pages.
  void InitObjectList();
  void InitPageObjectsList();

  // The object number of page nPage: from 1 when writing, from 0 when reading; 0 past the list.
  DWORD GetPageObjectNumber(DWORD nPage);
  // Pages that this session has added.
  DWORD GetCurrentPageNumber();

  // Pages of the document; for one that was read, what its page tree claims.
  DWORD GetNumberOfPages();
  DWORD GetTotalPageNumber();

  // Object numbers of the document's skeleton.
  DWORD GetCatalogObjectNr();
  DWORD GetOutlinesObjectNr();
  DWORD GetPagesRootObjectNr();

  // Document skeleton

  // Header lines and object 1, the Info dictionary. A null title takes the session's, or the
  // default; a null creator takes the first byte of the banner.
  int WritePDFHeader(char const* szTitle, char const* szCreator);
  // The outlines object; nCount is the value of its /Count.
  DWORD CreateOutlinesObject(DWORD nCount);
  // The pages root under its reserved number, with all pages. Error 11 if it is written already.
  DWORD CreatePagesRootObject();
  // nResourceType 1 is a font, 2 an XObject named szResourceName; ptSize is in points. The page's
  // contents must be the next object. Errors 12 past 30,000 pages, 13 for another type.
  DWORD CreatePageObject(DWORD nParent, int nResourceType, DWORD nResourceObject,
                         DWORD nProcSetObject, char const* szResourceName, POINT ptSize);
  // nImageType 0: ImageB, 1: ImageC, 2: ImageI.
  DWORD CreateProcSetObject(int nImageType, int bText);
  // Helvetica, under the name F1.
  DWORD CreateFontObject();
  // The catalog, of the two objects' numbers.
  DWORD CreateCatalogObject(DWORD nPagesRoot, DWORD nOutlines);

  // Create and finish

  // Start a document in a new file, or an update of the file if it exists. See pdf_CreatePDF.
  int CreatePDF(char const* szFileName);
  int CreatePDFW(WCHAR const* szFileName);

  // Open the target only, without the document's first objects. Error 1.
  int CreatePDFFile(char const* szFileName);
  int CreatePDFFileW(WCHAR const* szFileName);

  // pAppendTo is the address of a document of nSize bytes, which is copied, or 0 for a new document
  // with nSize as the first capacity.
  int CreatePDFInMemory(int64_t pAppendTo, DWORD nSize);
  // Opens the target only.
  int CreatePDFFileInMemory(int64_t pAppendTo, DWORD nSize);
  // The cross-reference section and the trailer of a new document.
  int WriteXref();
  // See pdf_FinishPDF. A document in memory is freed.
  int FinishPDF();
  // Hands the document over: *ppData receives its address, to be freed with pdf_FreePDFInMemory.
  int FinishPDFInMemory(int64_t* ppData, DWORD* pSize);
  // Closes what is open; a document in memory is freed.
  void ClosePDFFile();
  // Closes what is open and hands a document in memory over; both pointers may be null.
  void ClosePDFFileInMemory(int64_t* ppData, DWORD* pSize);

  // Pages

  // See pdf_SaveDIBAsPDFPage and pdf_SaveDIBAsColorPDFPage. A null narrow library name is taken as
  // empty by the colour form only.
  int SaveDIBAsPDFPage(void* hDIB, char const* szCodecLibrary);
  int SaveDIBAsPDFPageW(void* hDIB, WCHAR const* szCodecLibrary);
  int SaveDIBAsColorPDFPage(void* hDIB, char const* szCodecLibrary, DWORD nCompression,
                            int nQuality);
  int SaveDIBAsColorPDFPageW(void* hDIB, WCHAR const* szCodecLibrary, DWORD nCompression,
                             int nQuality);

  // Whole points for a picture of pixels at dots per inch.
  POINT CalculatePageSizeFromPixelsAndDPI(LONG nWidth, LONG nHeight, DWORD nDpiX, DWORD nDpiY);
  // 1 bit: nOrder is 1 if the first colour is black, else 0. Errors 2 and 10.
  int CheckDIBPaletteOrder(void* hDIB, int& nOrder);

  // Image objects

  // Writes an image XObject and its length object; pData holds nSize encoded bytes. Error 15 for a
  // compression without a filter.
  DWORD CreateImageXObject(_IMAGE_PARAMETERS Params, BYTE const* pData, DWORD nSize,
                           _FILTER Filter);
  // Fills the record. Errors 7 for null, 16 for negative columns, rows or damaged rows.
  int SetCCITTFilterParams(_CCITT_FILTER_PARAMS* pParams, int nColumns, int nRows,
                           _CCITT_ENCODE_TYPE K, int bBlackIs1, int bEndOfLine,
                           int bEncodedByteAlign, int bEndOfBlock, int nDamagedRowsBeforeError);

  // 1 if the value is the identifier or has the flag's bit, else 0.
  int IsCompession_NOT_SPECIFIED(DWORD nCompression);
  int IsCompession_NO_COMPRESSION(DWORD nCompression);
  int IsCompession_ASCII_HEX_DECODE(DWORD nCompression);
  int IsCompession_ASCII_85_DECODE(DWORD nCompression);
  int IsCompession_LZW_DECODE(DWORD nCompression);
  int IsCompession_FLAT_DECODE(DWORD nCompression);
  int IsCompession_RUNLENGTH_DECODE(DWORD nCompression);
  int IsCompession_CCITT_FAX_DECODE(DWORD nCompression);
  int IsCompession_DCT_JPEG_DECODE(DWORD nCompression);

  // Encoders: a new, unlocked block with nSize stream bytes, rows from the top without
  // padding; the block may be larger. 0 or -1 on failure.

  // The coder that nCompression names. Error 15 for a value without one.
  void* ConvertDIB2PDFImage(void* hDIB, DWORD& nSize, DWORD nCompression,
                            char const* szCodecLibrary, int nQuality);
  void* ConvertDIB2PDFImageW(void* hDIB, DWORD& nSize, DWORD nCompression,
                             WCHAR const* szCodecLibrary, int nQuality);

  // 24 bits as red, green, blue. Error 10 for other depths than 1, 8 and 24.
  void* ConvertDIB2UncompressedPDFImage(void* hDIB, DWORD& nSize);
  // The same, coded with Flate; nLevel is zlib's.
  void* ConvertDIB2FlatePDFImage(void* hDIB, DWORD& nSize, DWORD nCompression, int nLevel);
  // 8 bits only, else error 5.
  void* ConvertDIB2RLEPDFImage(void* hDIB, DWORD& nSize, DWORD nCompression);
  // Codes one row of nLength bytes; pOut has room for twice as many, at least 2.
  void RLEEncriptLine(BYTE* pLine, DWORD nLength, BYTE* pOut, DWORD& nOutSize);

  // Group 4 by the sibling, in memory or (File) through a temporary file. Errors 5, 10, 17 to 20.
  void* ConvertDIB2CcittPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary);
  void* ConvertDIB2CcittPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary);
  void* ConvertDIB2CcittPDFImageFileW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary);

  // JPEG by the sibling, likewise. Errors 5 for 1 bit, 10, 17, 18, 20, 21 (19 in the File form).
  void* ConvertDIB2DctJpegPDFImage(void* hDIB, DWORD& nSize, char const* szCodecLibrary,
                                   int nQuality, DWORD nCompression);
  void* ConvertDIB2DctJpegPDFImageW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary,
                                    int nQuality, DWORD nCompression);
  void* ConvertDIB2DctJpegPDFImageFileW(void* hDIB, DWORD& nSize, WCHAR const* szCodecLibrary,
                                        int nQuality, DWORD nCompression);

  // Bitmap access

  // Bits per pixel; 0 if the bitmap cannot be read.
  int GetDIBBitsPerPixel(void* hDIB);
  // Dots per inch in x and y; 96 by 96 if the bitmap has none, (0, 0) if it cannot be read.
  POINT GetDIBDPI(void* hDIB);
  // Width and height in pixels; (0, 0) if the bitmap cannot be read.
  POINT GetDIBImageSize(void* hDIB);
  // A new block of *pSize bytes: red, green, blue for each colour table entry. -1 on failure.
  void* ExtractPaletteFromDIB(void* hDIB, DWORD* pSize);

  // Information strings: 1 or 0.

  // See pdf_SetTitleA and pdf_GetTitleA. Errors 7 for null, 35 for a buffer that is too small.
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

  // Information strings of a dictionary

  // The text string value of szKey ("/Title") as UTF-16 in a new array (free()); 1 or 0, no error.
  int GetStringValue2W(BYTE* pData, uint64_t nSize, char const* szKey, WCHAR** ppValue,
                       uint64_t* pnLength);
  // The same operation in its narrow form, which always delivers an empty string (free()).
  int GetStringValue2A(BYTE* pData, uint64_t nSize, char const* szKey, char** ppValue,
                       uint64_t* pnLength);

  // Decoders: a new, unlocked bitmap from the bytes of an image stream, or 0. nKind is 1
  // (1 bit), 2 (8 bits with hPalette) or 4 (24 bits); a negative height keeps the row order. The
  // resolution is 0. Errors 10, 27, 28.

  // Rows from the top, without padding. The bytes of a 24-bit block are exchanged in place.
  void* CreateDIBFromUncompressedData(void* hData, DWORD nWidth, DWORD nHeight, int nKind,
                                      void* hPalette);
  // The same, coded with Flate.
  void* CreateDIBFromFLATEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind,
                               void* hPalette);
  // Run-length data of 8 bits.
  void* CreateDIBFromRLEData(void* hData, DWORD nWidth, DWORD nHeight, DWORD nKind, void* hPalette);
  // Decodes run-length data into the rows of a bitmap. 1 or 0.
  int DecriptRLEData(BYTE* pData, uint64_t nSize, void* hDIB);

  // Group 4 by the sibling, from memory or (File) a temporary file. Errors 10, 17 to 19, 30.
  void* CreateDIBFromCCITTData(void* hData, DWORD nWidth, DWORD nHeight);
  void* CreateDIBFromCCITTDataFile(void* hData, DWORD nWidth, DWORD nHeight);

  // JPEG by the sibling; depth and size are the file's. Errors 17, 18, 21, 27.
  void* CreateDIBFromJPEGData(void* hData);
  void* CreateDIBFromJPEGDataFile(void* hData);

  // The colour table of nHighValue + 1 entries that object nObject holds, as a new block, or 0.
  void* LoadPalette(DWORD nBitsPerComponent, DWORD nHighValue, DWORD nObject);

  // Cross-reference reading

  // Reads the open document's index, catalog, page list and strings: the number of object rows,
  // or 0.
  DWORD BuildObjectListFromFile();
  // Takes the newest trailer at the channel's position; *pPrev receives its /Prev. 1 or 0.
  DWORD BuildObjectListFromTrailer(DWORD* pPrev);
  // Reads the table at an offset; bOlder leaves rows that are taken. 1 or 0.
  int BuildObjectListFromXrefTable(DWORD nOffset, int bOlder);
  // The same for /Prev alone, of an older trailer; 0 for one that names itself. 1 or 0.
  int ReadPrevFlag(DWORD* pPrev);
  // The number that the object at an offset declares, or 0.
  DWORD GetRealObjectNumber(DWORD nOffset);

  // Document reading

  // See pdf_OpenPDFFile and pdf_OpenPDFInMemory. 1 or 0 with error 22, 23, 24, 25 or 1.
  int OpenPDFFile(char const* szFileName);
  int OpenPDFFileW(WCHAR const* szFileName);
  int OpenPDFFileInMemory(int64_t pData, DWORD nSize);

  // An object's text in a new block, or 0.
  void* LoadObject(DWORD nObject);
  // The bytes of an object's text; 0 for object 0.
  DWORD GetObjectSize(DWORD nObject);
  // 1 for ordinary objects, whatever they are.
  DWORD GetObjectType(BYTE* pData, DWORD nSize);
  // 1 if the object looks like a page; 0 with error 34.
  int LoadPageObject(DWORD nObject);
  // The image of page nPage, counted from 0, as a new bitmap, or 0 (or -1 when memory is short).
  void* LoadImageFromPDF(DWORD nPage);
  // The same; the compression flags and the kind (1, 2, 4) are stored, if the pointers are given.
  void* LoadImageAndInfoFromPDF(DWORD nPage, DWORD* pnCompression, DWORD* pnKind);

  // Opens a document and loads one page's image; the document stays open.
  void* LoadPDFIntoDIB(char const* szFileName, DWORD nPage);
  void* LoadPDFIntoDIBW(WCHAR const* szFileName, DWORD nPage);

  // Walks the page tree from a node's text into the page list. 1 or 0.
  int ParseKids(BYTE* pData, DWORD nSize);
  // Notes which image kinds a /ProcSet names. 1, or 0 with error 33.
  int GetProcSetData(BYTE* pData, DWORD nSize);

  // Scanner: values after a key text in an object's bytes. The buffer's last byte is
  // written while a search runs, and never part of a match.

  // 1 for CR, LF, blank and "["; for a digit; for a digit or a letter; else 0.
  DWORD IsDelimiter(char c);
  DWORD IsNumber(char c);
  DWORD IsValidChar(char c);

  // The first place of the key's text, or null. Error 2 for a missing argument.
  BYTE* GetKeyBeginning(BYTE* pData, DWORD nSize, char const* szKey);
  // 0 for a key at the start, and for none.
  DWORD GetKeyBeginningByteOffset(BYTE* pData, DWORD nSize, char const* szKey);
  // 1 if the key's text is anywhere, else 0.
  int IsFlagSet(BYTE* pData, DWORD nSize, char const* szKey);

  // The two numbers, or the one number, after a key (null: from the start), after the first name,
  // or in the array after a key without its slash. 1 or 0, error 2 for a missing argument. A
  // number of 100 digits or more ends the process.
  int GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pFirst, DWORD* pSecond);
  int GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pValue);
  int GetFirstValue(BYTE* pData, DWORD nSize, DWORD* pFirst, DWORD* pSecond);
  int GetValueFromArray(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pFirst, DWORD* pSecond);

  // The number that an object consists of. 1 or 0.
  int GetValueFromReference(DWORD nObject, DWORD* pValue);
  // One alphanumeric token; the buffer needs one byte more than *pnSize says.
  int GetStringValue(BYTE* pData, DWORD nSize, char const* szKey, char* szValue, uint64_t* pnSize);
  // The key with its value, copied with a NUL after it; *pnSize is the room, and the size needed
  // when that is too little. 1 or 0.
  int GetKeyWithValue(BYTE* pData, DWORD nSize, char const* szKey, BYTE* pValue, DWORD* pnSize);
  // 1 if the key (without slash) was found; bDictionary is whether a dictionary follows.
  int IsDictionary(BYTE* pData, DWORD nSize, int& bDictionary, char const* szKey);
  // 1 if a reference follows the key, else 0.
  int IsReference(BYTE* pData, DWORD nSize, char const* szKey);

  // Update

  // Writes the old pages root again, with the added pages. Errors 1, 26.
  int CreatePagesRootObjectForAppend();
  // The table of all objects, old and new, and the trailer.
  int WriteXrefForAppend();
  // Clears the list of added pages.
  void InitAppendedPageObjectsList();

 private:
  friend struct sorrelin::SessionAccess;

  sorrelin::SessionState*
      m_pState;  // owned; null where memory was short: each method fails with 10
};

#endif  // SORRELIN_FRAME_SESSION_H_

// The lowest layer of the writer: numbers objects, records where each begins, and puts bytes into
// the channel. Strictly sequential: it never seeks, and counts its own offset.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/process.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

constexpr size_t kLineBytes = 1024;  // a formatted line with its terminator
constexpr BYTE kCarriageReturn = 0x0D;
constexpr BYTE kLineFeed = 0x0A;

bool IsFile(sorrelin::FileChannel const* channel) {
  return sorrelin::IsUsableChannel(channel) && channel->bMemory == 0;
}

}  // namespace

DWORD sorrelin::SessionState::WriteRawDataToPDFFile(BYTE const* pData, DWORD nBytes) {
  if (pData == nullptr) return Fail(PDF_ERROR_NULL_POINTER);
  if (nBytes == 0) return Fail(PDF_ERROR_ZERO_BYTES);
  if (!sorrelin::IsUsableChannel(m_hFile)) return Fail(PDF_ERROR_INVALID_HANDLE);
  // Kept: the offset moves before the write, and stays where the write fails.
  m_nFilePos += nBytes;
  return WriteToChannel(pData, nBytes);
}

DWORD sorrelin::SessionState::WriteEolToPDFFile() {
  if (!sorrelin::IsUsableChannel(m_hFile)) return Fail(PDF_ERROR_INVALID_HANDLE);
  m_nFilePos += m_bUseChar13 != 0 ? 2 : 1;
  if (m_bUseChar13 != 0 && WriteToChannel(&kCarriageReturn, 1) == 0) return 0;
  return WriteToChannel(&kLineFeed, 1);
}

int sorrelin::SessionState::WriteToPDFFile(char const* szText, int bEol) {
  if (szText == nullptr) return static_cast<int>(Fail(PDF_ERROR_NULL_POINTER));
  DWORD const length = static_cast<DWORD>(std::strlen(szText));
  bool const is_line = bEol != 0 && m_bUseChar13 == 0 && length != 0 && length < kLineBytes;
  if (!is_line || !IsFile(m_hFile)) {
    if (WriteRawDataToPDFFile(reinterpret_cast<BYTE const*>(szText), length) == 0) return 0;
    if (bEol != 0 && WriteEolToPDFFile() == 0) return 0;
    return m_bUseChar13 != 0 ? 2 : 1;
  }
  // The same in one call of the system, which is most of the time that a small page takes.
  BYTE line[kLineBytes];
  std::memcpy(line, szText, length);
  line[length] = kLineFeed;
  DWORD written = 0;
  bool const done = sorrelin::ChannelWrite(m_hFile, line, length + 1, &written, nullptr) != 0;
  m_nFilePos += written < length ? length : length + 1;  // what would have been tried in two
  return done ? 1 : static_cast<int>(Fail(PDF_ERROR_SYSTEM));
}

bool sorrelin::SessionState::WriteFormatted(int bEol, char const* szFormat, ...) {
  char line[kLineBytes];
  va_list arguments;
  va_start(arguments, szFormat);
  int const length = std::vsnprintf(line, sizeof line, szFormat, arguments);
  va_end(arguments);
  // Kept: a line that does not fit ends the process; there is no code for it.
  if (length < 0 || static_cast<size_t>(length) >= sizeof line) {
    EndProcess("sorrelin: a line of the document does not fit in 1024 bytes");
  }
  return WriteToPDFFile(line, bEol) != 0;
}

bool sorrelin::SessionState::WriteLines(std::initializer_list<char const*> lines) {
  return std::all_of(lines.begin(), lines.end(),
                     [this](char const* line) { return WriteToPDFFile(line, 1) != 0; });
}

DWORD sorrelin::SessionState::WriteToChannel(BYTE const* pData, DWORD nBytes) {
  DWORD written = 0;
  if (sorrelin::ChannelWrite(m_hFile, pData, nBytes, &written, nullptr) == 0) {
    return Fail(PDF_ERROR_SYSTEM);
  }
  return written;
}

DWORD sorrelin::SessionState::Fail(DWORD nError) {
  PDF_SetLastError(nError);
  return 0;
}

void sorrelin::SessionState::SetChar13(int bUseChar13) { m_bUseChar13 = bUseChar13; }

int sorrelin::SessionState::UseChar13() { return m_bUseChar13; }

DWORD sorrelin::SessionState::ObjectStart(int bDict, int bEol) {
  // Kept: the number stays taken where the object fails.
  return ObjectStart(++m_nCurrentObject, bDict, bEol);
}

DWORD sorrelin::SessionState::ObjectStart(DWORD nObject, int bDict, int bEol) {
  if (nObject >= kObjectRows) return Fail(PDF_ERROR_NEW_PAGE_OBJECT);
  if (ObjectExistsAlready(nObject) != 0) return Fail(PDF_ERROR_OBJECT_EXISTS);
  m_Objects.Change(nObject) = {m_nFilePos, 0, 1};
  m_pReader->file.Forget();
  return WriteObjectHeader(nObject, bDict, bEol) ? nObject : 0;
}

DWORD sorrelin::SessionState::ObjectStartNewGen(DWORD nObject, int bDict, int bEol,
                                                int bNewGeneration) {
  if (ObjectExistsAlready(nObject) == 0) return Fail(PDF_ERROR_OBJECT_EXISTS);
  ObjectEntry& row = m_Objects.Change(nObject);
  row.nOffset = m_nFilePos;
  row.bInUse = 1;
  m_pReader->file.Forget();
  if (bNewGeneration != 0) ++row.nGeneration;
  return WriteObjectHeader(nObject, bDict, bEol) ? nObject : 0;
}

bool sorrelin::SessionState::WriteObjectHeader(DWORD nObject, int bDict, int bEol) {
  int const generation = static_cast<int>(m_Objects[nObject].nGeneration);
  return WriteFormatted(bEol, "%d %d obj", static_cast<int>(nObject), generation) &&
         (bDict == 0 || WriteToPDFFile("<<", 1) != 0);
}

int sorrelin::SessionState::ObjectEnd(int bDict) {
  if (bDict != 0 && WriteToPDFFile(">>", 1) == 0) return 0;
  return WriteToPDFFile("endobj", 1) != 0 ? 1 : 0;
}

int sorrelin::SessionState::ObjectExistsAlready(DWORD nObject) {
  return m_Objects.IsTaken(nObject) ? 1 : 0;
}

DWORD sorrelin::SessionState::GetCurrentObject() { return m_nCurrentObject; }

void sorrelin::SessionState::SetCurrentObject(DWORD nObject) { m_nCurrentObject = nObject; }

DWORD sorrelin::SessionState::GetNextObject() { return m_nCurrentObject + 1; }

DWORD sorrelin::SessionState::ReserveOneObject() {
  if (m_nCurrentObject >= kObjectRows - 1) return Fail(PDF_ERROR_NEW_PAGE_OBJECT);
  return ++m_nCurrentObject;
}

DWORD sorrelin::SessionState::ReservePagesRootObject() {
  m_Facts.pages_root = ReserveOneObject();
  return m_Facts.pages_root;
}

DWORD sorrelin::SessionState::BeginStream() {
  DWORD const object = ObjectStart(0, 1);
  if (object == 0) return 0;
  if (!WriteFormatted(1, "<< /Length %d 0 R >>", static_cast<int>(GetNextObject())) ||
      WriteToPDFFile("stream", 1) == 0) {
    return 0;
  }
  MarkStreamBegining();
  return object;
}

int sorrelin::SessionState::EndStream() {
  MarkStreamEnd();
  return WriteToPDFFile("endstream", 1) != 0 ? ObjectEnd(0) : 0;
}

void sorrelin::SessionState::MarkStreamBegining() { m_nStreamBegin = m_nFilePos; }

void sorrelin::SessionState::MarkStreamEnd() { m_nStreamEnd = m_nFilePos; }

DWORD sorrelin::SessionState::GetStreamLength() { return m_nStreamEnd - m_nStreamBegin; }

DWORD sorrelin::SessionState::WriteStreamLengthObject() {
  DWORD const object = ObjectStart(0, 1);
  if (object == 0) return 0;
  DWORD const length = GetStreamLength();
  // Kept: the object stays open, with its first line written.
  if (length == 0) return Fail(PDF_ERROR_EMPTY_STREAM);
  return WriteFormatted(1, "%d", static_cast<int>(length)) && ObjectEnd(0) != 0 ? object : 0;
}

DWORD sorrelin::SessionState::WriteDataStreamObject(void* hData, DWORD nBytes) {
  PDF_SetLastError(PDF_ERROR_NONE);
  if (hData == nullptr || hData == INVALID_HANDLE_VALUE) return 0;
  DWORD const object = ObjectStart(1, 1);
  if (object == 0 || !WriteFormatted(1, "/Length %d 0 R ", static_cast<int>(GetNextObject())) ||
      !WriteLines({">>", "stream"})) {
    return 0;
  }
  MarkStreamBegining();
  if (!WriteBlock(hData, nBytes) || !FinishDataStream()) return 0;
  return WriteStreamLengthObject() != 0 ? object : 0;
}

bool sorrelin::SessionState::WriteBlock(void* hData, DWORD nBytes) {
  DWORD const size = static_cast<DWORD>(GlobalSize(hData));
  BYTE const* const data = static_cast<BYTE const*>(GlobalLock(hData));
  DWORD const bytes = nBytes != 0 ? nBytes : size;
  DWORD const held = std::min(bytes, size);
  bool const written =
      data != nullptr && bytes != 0
          ? (held == 0 || WriteRawDataToPDFFile(data, held) != 0) && WriteZeros(bytes - held)
          : Fail(PDF_ERROR_EMPTY_STREAM) != 0;
  if (data != nullptr) GlobalUnlock(hData);
  return written;
}

// What a caller's size asks for beyond the block.
bool sorrelin::SessionState::WriteZeros(DWORD nBytes) {
  static constexpr BYTE kZeros[4096] = {};
  while (nBytes != 0) {
    DWORD const piece = std::min<DWORD>(nBytes, sizeof kZeros);
    if (WriteRawDataToPDFFile(kZeros, piece) == 0) return false;
    nBytes -= piece;
  }
  return true;
}

// Kept: ">" and its line end stand behind the data of every stream with a full dictionary, and
// count in its length.
bool sorrelin::SessionState::FinishDataStream() {
  if (WriteToPDFFile(">", 1) == 0) return false;
  MarkStreamEnd();
  return WriteToPDFFile("endstream", 1) != 0 && ObjectEnd(0) != 0;
}

void sorrelin::SessionState::InitObjectList() {
  m_Objects.Clear();
  m_pReader->file.Forget();
}

void sorrelin::SessionState::InitPageObjectsList() { m_Pages.Clear(); }

DWORD sorrelin::SessionState::GetPageObjectNumber(DWORD nPage) { return m_Pages[nPage]; }

void sorrelin::SessionState::SetPageObjectNumber(DWORD nPage, DWORD nObject) {
  m_Pages.Set(nPage, nObject);
}

DWORD sorrelin::SessionState::GetCurrentPageNumber() { return m_nCurrentPage; }

DWORD sorrelin::SessionState::GetNumberOfPages() { return m_Pages.count(); }

DWORD sorrelin::SessionState::GetTotalPageNumber() { return m_Pages.count(); }

DWORD sorrelin::SessionState::GetCatalogObjectNr() { return m_Facts.catalog; }

DWORD sorrelin::SessionState::GetOutlinesObjectNr() { return m_Facts.outlines; }

DWORD sorrelin::SessionState::GetPagesRootObjectNr() { return m_Facts.pages_root; }

// Trailers of the classic route: the first 300 bytes from the word "trailer" on, searched as text.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/session_state.h>

#include <algorithm>

namespace {

constexpr DWORD kTrailerBytes = 300;

struct TrailerText {
  BYTE bytes[kTrailerBytes];
  DWORD size = 0;

  // From the channel's position. False if there is nothing.
  bool Read(sorrelin::FileChannel* channel) {
    return sorrelin::ChannelRead(channel, bytes, kTrailerBytes, &size, nullptr) != 0 && size != 0;
  }
};

}  // namespace

DWORD sorrelin::SessionState::BuildObjectListFromTrailer(DWORD* pPrev) {
  TrailerText text;
  if (!text.Read(m_hFile)) return Fail(PDF_ERROR_SYSTEM);
  m_nInfoObject = 0;
  m_nInfoGeneration = 0;
  DWORD prev = 0;
  if (GetValue(text.bytes, text.size, "Prev", &prev) != 0 && pPrev != nullptr) *pPrev = prev;
  DWORD number = 0;
  DWORD generation = 0;
  if (GetValue(text.bytes, text.size, "Size", &m_nTrailerSize) == 0 ||
      GetValue(text.bytes, text.size, "Root", &number, &generation) == 0) {
    return Fail(PDF_ERROR_SYSTEM);
  }
  m_nCatalogObject = number;
  m_nCatalogGeneration = generation;
  // Kept: without the key Info is what Root is; updates write that pair back.
  GetValue(text.bytes, text.size, "Info", &number, &generation);
  m_nInfoObject = number;
  m_nInfoGeneration = generation;
  // Kept: an /ID whose text cannot be cut out leaves the old text and is no failure.
  TakeTrailerText(text.bytes, text.size, "/ID", m_szTrailerID);
  return TakeTrailerText(text.bytes, text.size, "/Encrypt", m_szTrailerEncrypt) ? 1 : 0;
}

// The key with its value as text, all zeros where the trailer does not mention it. False if it does
// and the text cannot be cut out, or is too long.
bool sorrelin::SessionState::TakeTrailerText(BYTE* pText, DWORD nSize, char const* szKey,
                                             char (&szTarget)[kTrailerTextBytes]) {
  if (IsFlagSet(pText, nSize, szKey + 1) == 0) {
    std::fill(std::begin(szTarget), std::end(szTarget), '\0');
    return true;
  }
  DWORD size = kTrailerTextBytes;
  return GetKeyWithValue(pText, nSize, szKey, reinterpret_cast<BYTE*>(szTarget), &size) != 0;
}

int sorrelin::SessionState::ReadPrevFlag(DWORD* pPrev) {
  TrailerText text;
  if (!text.Read(m_hFile)) return static_cast<int>(Fail(PDF_ERROR_SYSTEM));
  DWORD const entered = *pPrev;
  DWORD value = 0;
  if (IsReference(text.bytes, text.size, "Prev") != 0) {
    DWORD number = 0;
    if (GetValue(text.bytes, text.size, "Prev", &number) == 0 ||
        GetValueFromReference(number, &value) == 0) {
      return 0;
    }
    *pPrev = value;
  } else if (GetValue(text.bytes, text.size, "Prev", &value) != 0) {
    *pPrev = value;
  }
  if (*pPrev == entered) *pPrev = 0;
  return 1;
}

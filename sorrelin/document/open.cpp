// Opening of a document for reading, from a file or in place from a block of memory.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/wide_string.h>

#include <string_view>

namespace {

constexpr DWORD kHeaderBytes = 8;

// "%PDF-1.0" to "%PDF-1.8".
bool IsSupportedHeader(std::string_view header) {
  return header.starts_with("%PDF-1.") && header.back() >= '0' && header.back() <= '8';
}

}  // namespace

int sorrelin::SessionState::OpenPDFFile(char const* szFileName) {
  return OpenPDFFileW(sorrelin::ToWide(szFileName).c_str());
}

int sorrelin::SessionState::OpenPDFFileW(WCHAR const* szFileName) {
  if (szFileName == nullptr) return static_cast<int>(Fail(PDF_ERROR_INVALID_PARAMETER));
  CloseOpenDocument();
  return ReadDocument(sorrelin::ChannelOpenFile(szFileName, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                OPEN_EXISTING, 0, nullptr));
}

int sorrelin::SessionState::OpenPDFFileInMemory(int64_t pData, DWORD nSize) {
  if (pData == 0 || nSize == 0) return static_cast<int>(Fail(PDF_ERROR_INVALID_PARAMETER));
  CloseOpenDocument();
  return ReadDocument(
      sorrelin::ChannelAttachMemory(reinterpret_cast<void const*>(pData), nSize, true));
}

// Takes the channel, tests the header and reads the index. After a failure behind the header the
// document stays open, for the caller to close.
int sorrelin::SessionState::ReadDocument(sorrelin::FileChannel* pChannel) {
  m_hFile = pChannel;
  m_pReader->m_pChannel = pChannel;
  if (pChannel == sorrelin::InvalidChannel()) {
    m_hFile = nullptr;
    return static_cast<int>(Fail(PDF_ERROR_OPEN));
  }
  char header[kHeaderBytes];
  DWORD count = 0;
  bool const read = sorrelin::ChannelRead(pChannel, header, kHeaderBytes, &count, nullptr) != 0;
  if (!read || count != kHeaderBytes) return RejectDocument(PDF_ERROR_NOT_PDF);
  if (!IsSupportedHeader({header, kHeaderBytes})) return RejectDocument(PDF_ERROR_VERSION);
  return BuildObjectListFromFile() != 0 ? 1 : 0;
}

int sorrelin::SessionState::RejectDocument(DWORD nError) {
  sorrelin::ChannelClose(m_hFile);
  m_hFile = nullptr;
  m_pReader->m_pChannel = nullptr;
  return static_cast<int>(Fail(nError));
}

void* sorrelin::SessionState::LoadPDFIntoDIB(char const* szFileName, DWORD nPage) {
  return LoadPDFIntoDIBW(sorrelin::ToWide(szFileName).c_str(), nPage);
}

void* sorrelin::SessionState::LoadPDFIntoDIBW(WCHAR const* szFileName, DWORD nPage) {
  if (szFileName == nullptr) {
    PDF_SetLastError(PDF_ERROR_INVALID_HANDLE);
    return nullptr;
  }
  return OpenPDFFileW(szFileName) != 0 ? LoadImageFromPDF(nPage) : nullptr;
}

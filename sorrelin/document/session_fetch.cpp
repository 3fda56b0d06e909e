// The session's way to an object by number.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/object_fetch.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/syntax/byte_view.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

using sorrelin::ObjectBytes;
using sorrelin::ReaderState;

namespace {

constexpr std::string_view kEndobj = "endobj";
constexpr DWORD kFirstLook = 512;
constexpr DWORD kMostLook = 64 * 1024;

// Size of the object in the `bytes` bytes at `offset`: through "endobj" and one byte more, if no
// NUL stands in front of it.
DWORD SizeThroughEndobj(ReaderState& state, sorrelin::FileChannel* channel, DWORD offset,
                        DWORD bytes) {
  DWORD wanted = kFirstLook;
  for (DWORD at = 0; at < bytes;) {
    DWORD const look = std::min(wanted, bytes - at);
    auto const seen = state.m_Window.Look(channel, offset + at, look);
    if (!seen || seen->size() < look) return bytes;
    std::string_view const text = sorrelin::ByteView{seen->data(), seen->size()}.Text();
    size_t const found = text.find(kEndobj);
    if (found != std::string_view::npos) {
      return at + static_cast<DWORD>(found + kEndobj.size() + 1);
    }
    if (text.size() < look || at + look == bytes) return bytes;
    at += look - static_cast<DWORD>(kEndobj.size() - 1);
    wanted = std::min(4 * wanted, kMostLook);
  }
  return bytes;
}

bool SeekTo(sorrelin::FileChannel* channel, DWORD offset) {
  LONG const target = static_cast<LONG>(offset);
  return sorrelin::ChannelSeek(channel, target, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER;
}

// A new, unlocked block of the file's bytes; null if the file has fewer, or none are asked for.
HGLOBAL ReadBlock(ReaderState& state, sorrelin::FileChannel* channel, DWORD offset, DWORD bytes) {
  HGLOBAL const block = GlobalAlloc(GHND, bytes);
  void* const data = block != nullptr ? GlobalLock(block) : nullptr;
  bool const read = data != nullptr && state.m_Window.Read(channel, offset, data, bytes) == bytes;
  if (data != nullptr) GlobalUnlock(block);
  return read ? block : GlobalFree(block);
}

HGLOBAL CopyToBlock(ObjectBytes const& object) {
  HGLOBAL const block = GlobalAlloc(GHND, object.nSize);
  void* const data = block != nullptr ? GlobalLock(block) : nullptr;
  if (data == nullptr) return GlobalFree(block);
  std::memcpy(data, object.pData, object.nSize);
  GlobalUnlock(block);
  return block;
}

}  // namespace

// Kept: in a document of the stream route a size costs a whole fetch, and moves the channel.
DWORD sorrelin::SessionState::GetObjectSize(DWORD nObject) {
  if (nObject == 0) return 0;
  if (m_pReader->m_bStreamIndex != 0) {
    ObjectBytes object;
    sorrelin::LoadObjectBytes(m_pReader.get(), &object, nObject, 0);
    std::free(object.pData);
    if (object.bValid != 0) return object.nSize;
  }
  return TableObjectSize(nObject);
}

void* sorrelin::SessionState::LoadObject(DWORD nObject) {
  if (nObject == 0) return nullptr;
  if (m_pReader->m_bStreamIndex != 0) {
    ObjectBytes object;
    sorrelin::LoadObjectBytes(m_pReader.get(), &object, nObject, 0);
    HGLOBAL const block = object.bValid != 0 ? CopyToBlock(object) : nullptr;
    std::free(object.pData);
    if (object.bValid != 0) return block;
  }
  return LoadTableObject(nObject);
}

// The size of a document that is only read does not change.
DWORD sorrelin::SessionState::DocumentBytes() {
  if (m_bAppendMode != 0 || m_pReader->m_pXRef == nullptr) {
    return sorrelin::ChannelGetSize(m_hFile, nullptr);
  }
  auto& bytes = m_pReader->m_nDocumentBytes;
  if (!bytes) bytes = sorrelin::ChannelGetSize(m_hFile, nullptr);
  return *bytes;
}

// A number beyond the table has a row of zeros, as far as fetches go.
DWORD sorrelin::SessionState::TableOffset(DWORD nObject) const {
  return nObject < kObjectRows ? m_Objects[nObject].nOffset : 0;
}

// From the row's offset to the next one in the table, or to the document's end; less if an "endobj"
// can be seen in it. An offset behind the end gives a size that no read delivers.
DWORD sorrelin::SessionState::TableObjectSize(DWORD nObject) {
  if (!sorrelin::IsUsableChannel(m_hFile)) return 0;
  DWORD const offset = TableOffset(nObject);
  DWORD const rows = std::min(m_nObjectsInFile, kObjectRows);
  DWORD const end = m_pReader->m_Offsets.NextAbove({m_Objects, rows}, offset, DocumentBytes());
  if (offset > end) return end - offset;
  return SizeThroughEndobj(*m_pReader, m_hFile, offset, end - offset);
}

// Leaves the channel behind the bytes that it read.
void* sorrelin::SessionState::LoadTableObject(DWORD nObject) {
  DWORD const offset = TableOffset(nObject);
  if (!sorrelin::IsUsableChannel(m_hFile)) {
    if (offset != 0) PDF_SetLastError(PDF_ERROR_SYSTEM);
    return nullptr;
  }
  // Only to an offset that reads as a negative number a seek can fail; the others save a call.
  if (static_cast<LONG>(offset) < 0 && !SeekTo(m_hFile, offset)) {
    PDF_SetLastError(PDF_ERROR_SYSTEM);
    return nullptr;
  }
  if (m_pReader->m_bOpening && m_pReader->m_nWorkLeft == 0) return nullptr;
  DWORD const size = TableObjectSize(nObject);
  DWORD const held = DocumentBytes() - std::min(DocumentBytes(), offset);
  // A size that the document does not hold costs an opening nothing: nothing is read.
  bool const allowed = size <= held && (!m_pReader->m_bOpening || m_pReader->Spend(size));
  HGLOBAL const block = allowed ? ReadBlock(*m_pReader, m_hFile, offset, size) : nullptr;
  SeekTo(m_hFile, offset + std::min(size, held));
  return block;
}

// Kept: the token behind the key is never a name, so that the answer is 1 for ordinary objects;
// LoadPageObject goes by that.
DWORD sorrelin::SessionState::GetObjectType(BYTE* pData, DWORD nSize) {
  char type[31] = {};
  uint64_t size = sizeof type - 1;
  GetStringValue(pData, nSize, "/Type", type, &size);
  std::string_view const page = "/Page";
  bool const same =
      std::equal(page.begin(), page.end(), type, type + std::strlen(type),
                 [](char a, char b) { return std::tolower(BYTE(a)) == std::tolower(BYTE(b)); });
  return same ? 2 : 1;
}

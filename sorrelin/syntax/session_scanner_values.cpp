// The scanner methods of the session that read tokens, value texts and the /ProcSet flags.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/scanner.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

using sorrelin::ByteView;
using sorrelin::kNotFound;
using sorrelin::LastByte;

namespace {

// The first alphanumeric token behind the first separator from `match` on. As many bytes as the
// buffer has are looked at, counted from the match.
// Kept: a byte that belongs to no token hides itself, the next byte and all that touches them, so
// names are passed over; the object type test gives one answer for every object through this.
std::optional<std::string_view> FindToken(ByteView buffer, uint64_t match) {
  uint64_t passed = 0;
  while (passed < buffer.size && !sorrelin::IsSeparator(buffer[match + passed])) ++passed;
  bool armed = true;
  std::optional<uint64_t> start;
  for (++passed; passed < buffer.size; ++passed) {
    uint64_t const at = match + passed;
    if (sorrelin::IsAlphanumeric(buffer[at])) {
      if (!start && armed) start = at;
      armed = false;
      continue;
    }
    if (start) return buffer.Chars().substr(*start, at - *start);
    armed = sorrelin::IsSeparator(buffer[at]);
    if (!armed) ++passed;
  }
  return std::nullopt;
}

// Position of the byte that ends the value at `at`, or kNotFound.
// Kept: pairs of angle brackets overlap ("<<<" counts twice), and only a depth of exactly 0 ends a
// value; what an update writes back of /ID and /Encrypt is cut by these rules.
uint64_t FindValueEnd(ByteView buffer, uint64_t at) {
  int64_t angles = 0;
  int64_t brackets = 0;
  for (; at < buffer.size; ++at) {
    BYTE const c = buffer[at];
    bool const ends = c == '/' || c == 0 || sorrelin::IsSeparator(c);
    if (ends && angles == 0 && brackets == 0) return at;
    if (c == '<' && buffer[at + 1] == '<') ++angles;
    if (c == '>' && buffer[at + 1] == '>') --angles;
    if (c == '[') ++brackets;
    if (c == ']') --brackets;
  }
  return kNotFound;
}

enum class ProcSetForm { kNone, kArray, kReference, kName };

// What the first telling byte behind the key says of the value.
ProcSetForm FormOfProcSet(ByteView buffer, uint64_t at) {
  for (; at < buffer.size; ++at) {
    BYTE const c = buffer[at];
    if (c == '[') return ProcSetForm::kArray;
    if (c == '/') return ProcSetForm::kName;
    if (sorrelin::IsDigitChar(c)) return ProcSetForm::kReference;
  }
  return ProcSetForm::kNone;
}

// Bit 1 for ImageB, 2 for ImageI, 4 for ImageC.
DWORD ProcSetFlags(sorrelin::SessionState& session, BYTE* data, DWORD size) {
  DWORD flags = 0;
  if (session.IsFlagSet(data, size, "ImageC") != 0) flags |= 4;
  if (session.IsFlagSet(data, size, "ImageI") != 0) flags |= 2;
  if (session.IsFlagSet(data, size, "ImageB") != 0) flags |= 1;
  return flags;
}

}  // namespace

int sorrelin::SessionState::GetStringValue(BYTE* pData, DWORD nSize, char const* szKey,
                                           char* szValue, uint64_t* pnSize) {
  if (pData == nullptr || nSize == 0 || szKey == nullptr || szValue == nullptr ||
      pnSize == nullptr) {
    if (pnSize != nullptr) *pnSize = 0;
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  uint64_t const match = sorrelin::FindKey(pData, nSize, szKey, LastByte::kTerminatedOnMiss);
  if (match == kNotFound) return 0;
  std::string_view const token = FindToken({pData, nSize}, match).value_or(std::string_view());
  uint64_t const capacity = *pnSize;
  *pnSize = token.size();
  if (token.empty() || capacity < token.size()) return 0;
  std::memcpy(szValue, token.data(), token.size());
  szValue[token.size()] = 0;
  return 1;
}

int sorrelin::SessionState::GetKeyWithValue(BYTE* pData, DWORD nSize, char const* szKey,
                                            BYTE* pValue, DWORD* pnSize) {
  if (pData == nullptr || nSize == 0 || szKey == nullptr || pValue == nullptr ||
      pnSize == nullptr) {
    if (pnSize != nullptr) *pnSize = 0;
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  uint64_t const match = sorrelin::FindKey(pData, nSize, szKey, LastByte::kKept);
  if (match == kNotFound) return 0;
  ByteView const buffer{pData, nSize};
  uint64_t value = match + std::strlen(szKey);
  // Kept: a "[" directly behind the key is passed as a separator and not counted, its "]" is.
  while (sorrelin::IsSeparator(buffer[value])) ++value;
  uint64_t const end = FindValueEnd(buffer, value);
  DWORD const needed = end == kNotFound ? 0 : static_cast<DWORD>(end - match + 1);
  if (needed == 0 || *pnSize < needed) {
    *pnSize = needed;
    return 0;
  }
  std::memcpy(pValue, pData + match, needed - 1);
  pValue[needed - 1] = 0;
  return 1;
}

int sorrelin::SessionState::GetProcSetData(BYTE* pData, DWORD nSize) {
  if (pData == nullptr || nSize == 0) return 0;
  uint64_t const match = sorrelin::FindKey(pData, nSize, "ProcSet", LastByte::kTerminatedOnMiss);
  if (match == kNotFound) return 0;
  ProcSetForm const form = FormOfProcSet({pData, nSize}, match);
  if (form == ProcSetForm::kNone) return 0;
  m_nProcSetFlags = 0;
  if (form == ProcSetForm::kName) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  if (form == ProcSetForm::kReference) return ReadProcSetObject(pData, nSize);
  // Kept: the whole buffer is asked, not the array alone.
  m_nProcSetFlags = ProcSetFlags(*this, pData, nSize);
  return 1;
}

int sorrelin::SessionState::ReadProcSetObject(BYTE* pData, DWORD nSize) {
  DWORD object = 0;
  if (GetValue(pData, nSize, "ProcSet", &object) == 0) {
    Fail(PDF_ERROR_PROC_SET);
    return 0;
  }
  if (object >= kObjectRows || m_Objects[object].nOffset == 0) return 0;
  // The size comes first: looking for it may move the channel. Of an object that ends behind the
  // document one byte more than there is stands for the rest.
  uint64_t const object_bytes = GetObjectSize(object);
  DWORD const document_bytes = sorrelin::ChannelGetSize(m_hFile, nullptr);
  uint64_t const held = document_bytes - std::min(document_bytes, m_Objects[object].nOffset);
  std::vector<BYTE> block(static_cast<size_t>(std::min(object_bytes, held + 1)));
  LONG const offset = static_cast<LONG>(m_Objects[object].nOffset);
  if (sorrelin::ChannelSeek(m_hFile, offset, nullptr, 0) == INVALID_SET_FILE_POINTER) {
    Fail(PDF_ERROR_SYSTEM);
    return 0;
  }
  DWORD const size = static_cast<DWORD>(block.size());
  DWORD count = 0;
  sorrelin::ChannelRead(m_hFile, block.data(), size, &count, nullptr);
  if (count == 0) return 0;
  m_nProcSetFlags = ProcSetFlags(*this, block.data(), size);
  return 1;
}

// The scanner methods of the session that search for keys and read numbers.
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/number_scan.h>
#include <sorrelin/syntax/scanner.h>

#include <cstring>

using sorrelin::ByteView;
using sorrelin::kNotFound;
using sorrelin::LastByte;
using sorrelin::NumberScan;

namespace {

bool HasKeyAndBuffer(BYTE const* data, DWORD size, char const* key) {
  return data != nullptr && size != 0 && key != nullptr;
}

// Offset of the separator behind the first name in the buffer. A NUL in front of it, which may be
// the one behind the buffer, gives kNotFound.
uint64_t FindFirstNameEnd(BYTE* data, DWORD size) {
  uint64_t at = sorrelin::FindKey(data, size, "/", LastByte::kTerminatedOnMiss);
  if (at == kNotFound) return kNotFound;
  ByteView const buffer{data, size};
  while (!sorrelin::IsSeparator(buffer[at])) {
    if (buffer[at++] == 0) return kNotFound;
  }
  return at;
}

}  // namespace

DWORD sorrelin::SessionState::IsDelimiter(char c) {
  return sorrelin::IsSeparator(static_cast<BYTE>(c)) ? 1 : 0;
}

DWORD sorrelin::SessionState::IsNumber(char c) {
  return sorrelin::IsDigitChar(static_cast<BYTE>(c)) ? 1 : 0;
}

DWORD sorrelin::SessionState::IsValidChar(char c) {
  return sorrelin::IsAlphanumeric(static_cast<BYTE>(c)) ? 1 : 0;
}

BYTE* sorrelin::SessionState::GetKeyBeginning(BYTE* pData, DWORD nSize, char const* szKey) {
  if (!HasKeyAndBuffer(pData, nSize, szKey)) {
    PDF_SetLastError(PDF_ERROR_INVALID_HANDLE);
    return nullptr;
  }
  uint64_t const match = sorrelin::FindKey(pData, nSize, szKey, LastByte::kKept);
  return match == kNotFound ? nullptr : pData + match;
}

DWORD sorrelin::SessionState::GetKeyBeginningByteOffset(BYTE* pData, DWORD nSize,
                                                        char const* szKey) {
  BYTE const* const match = GetKeyBeginning(pData, nSize, szKey);
  return match == nullptr ? 0 : static_cast<DWORD>(match - pData);
}

int sorrelin::SessionState::IsFlagSet(BYTE* pData, DWORD nSize, char const* szKey) {
  return GetKeyBeginning(pData, nSize, szKey) != nullptr ? 1 : 0;
}

int sorrelin::SessionState::GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pFirst,
                                     DWORD* pSecond) {
  if (pData == nullptr || nSize == 0 || pFirst == nullptr || pSecond == nullptr) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  uint64_t const match =
      szKey == nullptr ? 0 : sorrelin::FindKey(pData, nSize, szKey, LastByte::kTerminatedOnMiss);
  if (match == kNotFound) return 0;
  return ReadPair(NumberScan({pData, nSize}, match, sorrelin::kPairRule), pFirst, pSecond);
}

int sorrelin::SessionState::GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pValue) {
  if (!HasKeyAndBuffer(pData, nSize, szKey) || pValue == nullptr) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  uint64_t const match = sorrelin::FindKey(pData, nSize, szKey, LastByte::kTerminatedOnMiss);
  if (match == kNotFound) return 0;
  return ReadSingle(NumberScan({pData, nSize}, match, sorrelin::kSingleRule), pValue);
}

int sorrelin::SessionState::GetFirstValue(BYTE* pData, DWORD nSize, DWORD* pFirst, DWORD* pSecond) {
  if (pData == nullptr || nSize == 0 || pFirst == nullptr || pSecond == nullptr) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  uint64_t const start = FindFirstNameEnd(pData, nSize);
  if (start == kNotFound) return 0;
  return ReadPair(NumberScan({pData, nSize}, start, sorrelin::kPairRule), pFirst, pSecond);
}

int sorrelin::SessionState::GetValueFromArray(BYTE* pData, DWORD nSize, char const* szKey,
                                              DWORD* pFirst, DWORD* pSecond) {
  if (pData == nullptr || nSize == 0 || pFirst == nullptr || pSecond == nullptr) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  uint64_t const match = szKey == nullptr ? 0 : sorrelin::FindDelimitedName(pData, nSize, szKey);
  if (match == kNotFound) return 0;
  return ReadPair(NumberScan({pData, nSize}, match, sorrelin::kArrayPairRule), pFirst, pSecond);
}

int sorrelin::SessionState::GetValueFromReference(DWORD nObject, DWORD* pValue) {
  if (nObject == 0) return 0;
  sorrelin::LoadedObject const object(LoadObject(nObject));
  if (object.size() == 0) return 0;
  return GetValue(object.data(), object.size(), "obj", pValue);
}

int sorrelin::SessionState::IsDictionary(BYTE* pData, DWORD nSize, int& bDictionary,
                                         char const* szKey) {
  if (pData == nullptr || nSize == 0) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  ByteView const buffer{pData, nSize};
  uint64_t at = szKey == nullptr ? 0 : sorrelin::FindBehindName(buffer, szKey);
  if (at == kNotFound) return 0;
  while (sorrelin::IsSeparator(buffer[at])) ++at;
  bDictionary = buffer[at] == '<' && buffer[at + 1] == '<' ? 1 : 0;
  return 1;
}

int sorrelin::SessionState::IsReference(BYTE* pData, DWORD nSize, char const* szKey) {
  if (!HasKeyAndBuffer(pData, nSize, szKey)) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  uint64_t const match = sorrelin::FindKey(pData, nSize, szKey, LastByte::kTerminatedOnMiss);
  if (match == kNotFound) return 0;
  ByteView const buffer{pData, nSize};
  bool (*const is_blank)(BYTE) = [](BYTE c) { return sorrelin::IsSeparator(c); };
  return HasReferenceShape(buffer, match + std::strlen(szKey), is_blank) ? 1 : 0;
}

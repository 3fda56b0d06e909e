// Doors of the session: values after a key in an object's bytes.
#include <sorrelin/document/object_loader.h>
#include <sorrelin/frame/door.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>

using sorrelin::Door;
using sorrelin::SessionState;

namespace {

// A search over a buffer that finds something or not: 1 or 0, code 2 for a missing argument.
template <typename Search>
int Find(SessionState* state, bool has_arguments, Search search) {
  return Door(state, [&](SessionState& open) {
    if (!has_arguments) open.Fail(PDF_ERROR_INVALID_HANDLE);
    return has_arguments && search() ? 1 : 0;
  });
}

bool AreGiven(BYTE const* data, DWORD size, void const* first, void const* second) {
  return data != nullptr && size != 0 && first != nullptr && second != nullptr;
}

}  // namespace

DWORD CCreatePDF::IsDelimiter(char c) {
  return sorrelin::IsSeparator(static_cast<BYTE>(c)) ? 1 : 0;
}

DWORD CCreatePDF::IsNumber(char c) { return sorrelin::IsDigitChar(static_cast<BYTE>(c)) ? 1 : 0; }

DWORD CCreatePDF::IsValidChar(char c) {
  return sorrelin::IsAlphanumeric(static_cast<BYTE>(c)) ? 1 : 0;
}

BYTE* CCreatePDF::GetKeyBeginning(BYTE* pData, DWORD nSize, char const* szKey) {
  BYTE* key = nullptr;
  Find(m_pState, AreGiven(pData, nSize, szKey, szKey), [&] {
    uint64_t const match = sorrelin::FindKey(pData, nSize, szKey, sorrelin::LastByte::kKept);
    if (match != sorrelin::kNotFound) key = pData + match;
    return key != nullptr;
  });
  return key;
}

DWORD CCreatePDF::GetKeyBeginningByteOffset(BYTE* pData, DWORD nSize, char const* szKey) {
  BYTE const* const match = GetKeyBeginning(pData, nSize, szKey);
  return match == nullptr ? 0 : static_cast<DWORD>(match - pData);
}

int CCreatePDF::IsFlagSet(BYTE* pData, DWORD nSize, char const* szKey) {
  return Find(m_pState, AreGiven(pData, nSize, szKey, szKey), [&] {
    return sorrelin::HoldsKey({pData, nSize}, szKey);
  });
}

int CCreatePDF::GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pFirst,
                         DWORD* pSecond) {
  return Find(m_pState, AreGiven(pData, nSize, pFirst, pSecond), [&] {
    return sorrelin::FindPair({pData, nSize}, szKey, pFirst, pSecond);
  });
}

int CCreatePDF::GetValue(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pValue) {
  return Find(m_pState, AreGiven(pData, nSize, szKey, pValue), [&] {
    return sorrelin::FindNumber({pData, nSize}, szKey, pValue);
  });
}

int CCreatePDF::GetFirstValue(BYTE* pData, DWORD nSize, DWORD* pFirst, DWORD* pSecond) {
  return Find(m_pState, AreGiven(pData, nSize, pFirst, pSecond), [&] {
    return sorrelin::FindPairAfterName({pData, nSize}, pFirst, pSecond);
  });
}

int CCreatePDF::GetValueFromArray(BYTE* pData, DWORD nSize, char const* szKey, DWORD* pFirst,
                                  DWORD* pSecond) {
  return Find(m_pState, AreGiven(pData, nSize, pFirst, pSecond), [&] {
    return sorrelin::FindArrayPair({pData, nSize}, szKey, pFirst, pSecond);
  });
}

int CCreatePDF::IsReference(BYTE* pData, DWORD nSize, char const* szKey) {
  return Find(m_pState, AreGiven(pData, nSize, szKey, szKey), [&] {
    return sorrelin::IsReferenceAfter({pData, nSize}, szKey);
  });
}

int CCreatePDF::IsDictionary(BYTE* pData, DWORD nSize, int& bDictionary, char const* szKey) {
  return Find(m_pState, AreGiven(pData, nSize, pData, pData), [&] {
    std::optional<bool> const found = sorrelin::IsDictionaryAfter({pData, nSize}, szKey);
    if (found) bDictionary = *found ? 1 : 0;
    return found.has_value();
  });
}

int CCreatePDF::GetStringValue(BYTE* pData, DWORD nSize, char const* szKey, char* szValue,
                               uint64_t* pnSize) {
  bool const given = AreGiven(pData, nSize, szKey, szValue) && pnSize != nullptr;
  if (!given && pnSize != nullptr) *pnSize = 0;
  return Find(m_pState, given, [&] {
    std::optional<std::string_view> const token = sorrelin::FindToken({pData, nSize}, szKey);
    if (!token) return false;
    uint64_t const room = *pnSize;
    *pnSize = token->size();
    if (token->empty() || room < token->size()) return false;
    *std::copy(token->begin(), token->end(), szValue) = '\0';
    return true;
  });
}

int CCreatePDF::GetKeyWithValue(BYTE* pData, DWORD nSize, char const* szKey, BYTE* pValue,
                                DWORD* pnSize) {
  bool const given = AreGiven(pData, nSize, szKey, pValue) && pnSize != nullptr;
  if (!given && pnSize != nullptr) *pnSize = 0;
  return Find(m_pState, given, [&] {
    std::optional<std::string_view> const text = sorrelin::FindKeyWithValue({pData, nSize}, szKey);
    if (!text) return false;
    DWORD const needed = text->data() == nullptr ? 0 : static_cast<DWORD>(text->size() + 1);
    if (needed == 0 || *pnSize < needed) {
      *pnSize = needed;
      return false;
    }
    *std::copy(text->begin(), text->end(), pValue) = BYTE{0};
    return true;
  });
}

// Text string values of a dictionary, as UTF-16.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/text.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/heap_copy.h>
#include <sorrelin/syntax/typed_value.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using sorrelin::ByteView;

constexpr DWORD kStringType = 1;

using HeapBytes = std::unique_ptr<void, decltype(&std::free)>;

WCHAR* NewUnits(size_t count) {
  return static_cast<WCHAR*>(std::calloc(std::max<size_t>(count, 1), sizeof(WCHAR)));
}

WCHAR Unit(BYTE high, BYTE low) { return static_cast<WCHAR>(high << 8 | low); }

// Kept: the array has as many units as the value has bytes, the text ends long before; callers take
// it as zero-terminated.
WCHAR* FromBigEndian(ByteView bytes) {
  WCHAR* const units = NewUnits(static_cast<size_t>(bytes.size));
  if (units == nullptr) return nullptr;
  uint64_t const pairs = (bytes.size - 3) / 2 + 1;
  for (uint64_t k = 0; k < pairs; ++k) units[k] = Unit(bytes[2 + 2 * k], bytes[3 + 2 * k]);
  return units;
}

WCHAR* FromLittleEndian(ByteView bytes) {
  WCHAR* const units = NewUnits(static_cast<size_t>(bytes.size));
  if (units == nullptr) return nullptr;
  for (uint64_t k = 0; k < bytes.size; ++k) {
    units[k] = Unit(bytes[3 + 2 * k], bytes[2 + 2 * k]);
    if (units[k] == 0) break;
  }
  return units;
}

size_t MeasureUnits(ByteView bytes, UINT code_page) {
  int const length = static_cast<int>(bytes.size);
  return static_cast<size_t>(
      MultiByteToWideChar(code_page, 0, bytes.Chars().data(), length, nullptr, 0));
}

// Kept: a UTF-8 mark decides the length only; the text, mark included, is read in the system's code
// page and cut at that length.
WCHAR* FromCodePage(ByteView bytes) {
  bool const marked = bytes.size >= 4 && bytes.Chars().starts_with("\xEF\xBB\xBF");
  size_t const length = MeasureUnits(bytes, marked ? CP_UTF8 : CP_ACP);
  std::vector<WCHAR> text(MeasureUnits(bytes, CP_ACP));
  MultiByteToWideChar(CP_ACP, 0, bytes.Chars().data(), static_cast<int>(bytes.size), text.data(),
                      static_cast<int>(text.size()));
  WCHAR* const units = NewUnits(length + 1);
  if (units != nullptr) std::copy_n(text.begin(), std::min(length, text.size()), units);
  return units;
}

WCHAR* DecodeText(ByteView bytes) {
  if (bytes.size > 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) return FromBigEndian(bytes);
  if (bytes.size > 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) return FromLittleEndian(bytes);
  return FromCodePage(bytes);
}

}  // namespace

int sorrelin::SessionState::GetStringValue2W(BYTE* pData, uint64_t nSize, char const* szKey,
                                             WCHAR** ppValue, uint64_t* pnLength) {
  if (m_pReader == nullptr || pData == nullptr || nSize == 0 || szKey == nullptr ||
      ppValue == nullptr || pnLength == nullptr) {
    return 0;
  }
  void* block = nullptr;
  uint64_t size = 0;
  if (sorrelin::GetTypedValue(m_pReader.get(), pData, nSize, szKey, &block, &size, kStringType) ==
      0) {
    return 0;
  }
  HeapBytes const owner(block, std::free);
  if (size >= INT_MAX) return 0;
  *ppValue = DecodeText({static_cast<BYTE const*>(block), size});
  return *ppValue != nullptr ? 1 : 0;
}

int sorrelin::SessionState::GetStringValue2A(BYTE* pData, uint64_t nSize, char const* szKey,
                                             char** ppValue, uint64_t* pnLength) {
  if (ppValue == nullptr) return 0;
  WCHAR* wide = nullptr;
  if (GetStringValue2W(pData, nSize, szKey, &wide, pnLength) == 0) return 0;
  std::free(wide);
  // Kept: the value is an empty string whatever was read.
  *ppValue = sorrelin::HeapCopy({});
  return *ppValue != nullptr ? 1 : 0;
}

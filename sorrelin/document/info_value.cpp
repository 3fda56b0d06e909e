// Text string values of a dictionary, as UTF-16.
#include <sorrelin/document/info_value.h>
#include <sorrelin/platform/text.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/typed_lookup.h>

#include <algorithm>
#include <climits>
#include <new>
#include <vector>

namespace sorrelin {

namespace {

InfoValue NewUnits(size_t count) {
  InfoValue units(static_cast<WCHAR*>(std::calloc(std::max<size_t>(count, 1), sizeof(WCHAR))));
  if (units == nullptr) throw std::bad_alloc();
  return units;
}

WCHAR Unit(BYTE high, BYTE low) { return static_cast<WCHAR>(high << 8 | low); }

// Kept: the array has as many units as the value has bytes, the text ends long before; callers take
// it as zero-terminated.
InfoValue FromBigEndian(ByteView bytes) {
  InfoValue units = NewUnits(static_cast<size_t>(bytes.size));
  uint64_t const pairs = (bytes.size - 3) / 2 + 1;
  for (size_t k = 0; k < pairs; ++k) units[k] = Unit(bytes[2 + 2 * k], bytes[3 + 2 * k]);
  return units;
}

InfoValue FromLittleEndian(ByteView bytes) {
  InfoValue units = NewUnits(static_cast<size_t>(bytes.size));
  for (size_t k = 0; k < bytes.size; ++k) {
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
InfoValue FromCodePage(ByteView bytes) {
  bool const marked = bytes.size >= 4 && bytes.Chars().starts_with("\xEF\xBB\xBF");
  size_t const length = MeasureUnits(bytes, marked ? CP_UTF8 : CP_ACP);
  std::vector<WCHAR> text(MeasureUnits(bytes, CP_ACP));
  MultiByteToWideChar(CP_ACP, 0, bytes.Chars().data(), static_cast<int>(bytes.size), text.data(),
                      static_cast<int>(text.size()));
  InfoValue units = NewUnits(length + 1);
  std::copy_n(text.begin(), std::min(length, text.size()), units.get());
  return units;
}

InfoValue DecodeText(ByteView bytes) {
  if (bytes.size > 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) return FromBigEndian(bytes);
  if (bytes.size > 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) return FromLittleEndian(bytes);
  return FromCodePage(bytes);
}

}  // namespace

InfoValue ReadInfoValue(ObjectSource* objects, std::span<BYTE> text, char const* key) {
  auto const value = FindTypedText(objects, text, key, kTypeString);
  if (!value || value->size() >= INT_MAX) return nullptr;
  return DecodeText(ViewOf(*value));
}

}  // namespace sorrelin

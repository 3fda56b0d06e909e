// Where the reading of the cross-reference starts, and whether a classic table is there.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/document/start_xref.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/char_class.h>
#include <sorrelin/syntax/text_integer.h>

#include <algorithm>
#include <utility>

namespace sorrelin {

namespace {

constexpr std::string_view kTableKeyword = "xref";
constexpr std::string_view kStreamKeyword = "/XRef";
constexpr DWORD kBackWindow = 40;  // bytes of each look back from the end
constexpr DWORD kBackStep = 20;
constexpr DWORD kBackLooks = 5;
constexpr DWORD kTableLook = 20;  // bytes that are read where a table should be
constexpr DWORD kSearchPasses = 9;
constexpr DWORD kSearchWindow = 84;  // bytes of the first pass
constexpr DWORD kSearchStep = 64;

// White space and NUL as blanks.
std::string Flatten(std::span<BYTE const> bytes) {
  std::string text(bytes.begin(), bytes.end());
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\0' || IsWhiteSpace(BYTE(c)); }, ' ');
  return text;
}

// Position of a table's keyword that follows a blank, which the end of "startxref" does not.
size_t FindTableKeyword(std::string_view text) {
  for (size_t at = text.find(kTableKeyword); at != std::string_view::npos;
       at = text.find(kTableKeyword, at + 1)) {
    if (at > 0 && text[at - 1] == ' ') return at;
  }
  return std::string_view::npos;
}

}  // namespace

std::optional<int32_t> NumberAfterStartXref(std::string_view text) {
  size_t const at = text.find(kStartXref);
  if (at == std::string_view::npos) return std::nullopt;
  return FirstInteger(text.substr(at + kStartXref.size()));
}

int CXRefStm::ReadStartXref() {
  DWORD const size = ChannelGetSize(m_File.channel(), nullptr);
  for (DWORD look = 0; look < kBackLooks; ++look) {
    DWORD const from_end = kBackWindow + look * kBackStep;
    if (from_end > size) break;
    auto const number = NumberAfterStartXref(ReadFlat(size - from_end, kBackWindow));
    if (!number) continue;
    m_nStartXref = *number;
    m_Marks.push_back({static_cast<DWORD>(*number), nullptr});
    return 1;
  }
  return 0;
}

int CXRefStm::IsClassicTableAt(DWORD const* offset) {
  DWORD const given = offset != nullptr ? *offset : static_cast<DWORD>(m_nStartXref);
  DWORD const size = ChannelGetSize(m_File.channel(), nullptr);
  DWORD start = given;
  if (given < size) {
    std::string const text = ReadFlat(given, kTableLook);
    if (text.size() < kTableLook) return 0;
    if (text.substr(0, kTableLook - 1).find(kTableKeyword) != std::string::npos) return 1;
  } else {
    start = size - std::min(size, kTableLook);
  }
  DWORD found = start;
  if (SearchXrefKeyword(&found, true) == 0) {
    found = given;
    if (SearchXrefKeyword(&found, false) == 0) return 0;
  }
  m_nStartXref = static_cast<int32_t>(found);
  return 1;
}

int CXRefStm::SearchXrefKeyword(DWORD* offset, bool backward) {
  DWORD start = *offset;
  bool was_at_front = false;
  for (DWORD pass = 0; pass < kSearchPasses; ++pass) {
    if (backward) start = start <= kSearchStep ? 0 : start - kSearchStep;
    if (backward && start == 0 && std::exchange(was_at_front, true)) return 0;
    DWORD const window = kSearchWindow + pass * kSearchStep;
    std::string const text = ReadFlat(start, window);
    if (text.size() < window) return 0;
    size_t const found = FindTableKeyword(text);
    if (found != std::string::npos) {
      *offset = start + static_cast<DWORD>(found);
      return 1;
    }
    if (text.find(kStreamKeyword) != std::string::npos) return 0;
  }
  return 0;
}

// What the channel has of the bytes there, white space and NUL as blanks.
std::string CXRefStm::ReadFlat(uint64_t offset, DWORD bytes) {
  auto const seen = m_File.Look(static_cast<DWORD>(offset), bytes);
  return Flatten(seen.value_or(std::span<BYTE const>{}));
}

}  // namespace sorrelin

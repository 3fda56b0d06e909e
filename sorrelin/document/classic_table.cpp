// Sections of a classic cross-reference table (ISO 32000-1, 7.5.4): "xref", then subsections, each
// a line with first number and count, and an entry of 18 characters and a line end for each object.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/table_cursor.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/text_integer.h>

#include <algorithm>
#include <cstdio>

using sorrelin::ByteView;
using sorrelin::TableCursor;
using sorrelin::TakeInteger;

namespace {

using Bytes = std::span<BYTE const>;

constexpr DWORD kHeaderBytes = 50;
constexpr DWORD kEntryBytes = 18;
constexpr DWORD kEntryLook = 36;
constexpr DWORD kTrailerLook = 100;
constexpr DWORD kObjectHeaderBytes = 20;
constexpr std::string_view kTrailer = "trailer";

DWORD SkipDelimiters(Bytes bytes, DWORD at) {
  while (at < bytes.size() && sorrelin::IsSeparator(bytes[at])) ++at;
  return at;
}

std::string_view TextOf(Bytes bytes) { return ByteView{bytes.data(), bytes.size()}.Text(); }

// The bytes that a subsection's first line takes if it is written as short as can be.
DWORD HeaderLength(bool at_keyword, DWORD first, DWORD count) {
  char const* const format = at_keyword ? "xref\r%d %d\r" : "%d %d\r";
  return static_cast<DWORD>(
      std::snprintf(nullptr, 0, format, static_cast<int>(first), static_cast<int>(count)));
}

struct TableEntry {
  DWORD offset;
  DWORD generation;
  char letter;
};

std::optional<TableEntry> ParseEntry(std::string_view text) {
  auto const offset = TakeInteger(text);
  auto const generation = offset ? TakeInteger(text) : std::nullopt;
  text = sorrelin::SkipScanSpace(text);
  if (!generation || text.empty()) return std::nullopt;
  return TableEntry{static_cast<DWORD>(*offset), static_cast<DWORD>(*generation), text[0]};
}

}  // namespace

int sorrelin::SessionState::BuildObjectListFromXrefTable(DWORD nOffset, int bOlder) {
  if (nOffset == 0) return 0;
  m_nMaxSectionOffset = std::max(m_nMaxSectionOffset, nOffset);
  if (bOlder == 0) {
    m_pReader->m_nTableEntriesLeft = sorrelin::ChannelGetSize(m_hFile, nullptr) / kEntryBytes;
  }
  TableCursor cursor;
  cursor.nAt = nOffset;
  cursor.bOlder = bOlder != 0;
  while (!cursor.bAtTrailer) {
    if (!ReadSubsection(cursor)) return 0;
  }
  return 1;
}

bool sorrelin::SessionState::ReadSubsection(TableCursor& cursor) {
  DWORD count = 0;
  if (!ReadSubsectionHeader(cursor, count)) return false;
  for (DWORD i = 0; i < count; ++i) {
    if (!ReadTableEntry(cursor)) return false;
  }
  return LookForTrailer(cursor);
}

// Kept: the line's length is computed and not measured; a line that holds more than its numbers and
// delimiters is read from the wrong place.
bool sorrelin::SessionState::ReadSubsectionHeader(TableCursor& cursor, DWORD& nCount) {
  BYTE header[kHeaderBytes];
  auto const read = cursor.Window.Read(m_hFile, cursor.nAt, header, kHeaderBytes);
  DWORD first = 0;
  if (read != kHeaderBytes || GetValue(header, kHeaderBytes, nullptr, &first, &nCount) == 0) {
    return Fail(PDF_ERROR_SYSTEM) != 0;
  }
  cursor.nAt += SkipDelimiters(header, HeaderLength(cursor.bAtKeyword, first, nCount));
  cursor.bAtKeyword = false;
  return true;
}

// The line end of an entry counts as delimiters in front of the next one, whatever its length.
bool sorrelin::SessionState::ReadTableEntry(TableCursor& cursor) {
  // Sections that overlap would list more entries than the document has room for.
  if (m_pReader->m_nTableEntriesLeft == 0) return Fail(PDF_ERROR_NOT_PDF) != 0;
  --m_pReader->m_nTableEntriesLeft;
  auto const seen = cursor.Window.Look(m_hFile, cursor.nAt, kEntryLook);
  if (!seen || seen->size() < kEntryBytes) return Fail(PDF_ERROR_SYSTEM) != 0;
  DWORD const begin = SkipDelimiters(*seen, 0);
  auto const entry = ParseEntry(TextOf(seen->subspan(begin)).substr(0, kEntryBytes));
  if (!entry) return Fail(PDF_ERROR_NOT_PDF) != 0;
  cursor.nAt += begin + kEntryBytes;
  // Kept: the object's own header gives the number, and an entry that leads to none lands in row 0;
  // documents whose subsections are numbered wrong open.
  DWORD const number = GetRealObjectNumber(entry->offset);
  if (number >= kObjectRows) return Fail(PDF_ERROR_MEMORY) != 0;
  if (cursor.bOlder && m_Objects[number].nOffset != 0) return true;
  m_Objects[number] = {entry->offset, entry->generation, entry->letter == 'n' ? 1U : 0U};
  m_nObjectsInFile = std::max(m_nObjectsInFile, number + 1);
  m_pReader->m_Offsets.Clear();
  return true;
}

// Leaves the channel behind the delimiters, on the trailer or the next subsection.
bool sorrelin::SessionState::LookForTrailer(TableCursor& cursor) {
  auto const seen = cursor.Window.Look(m_hFile, cursor.nAt, kTrailerLook);
  if (!seen || seen->size() < kTrailer.size()) return Fail(PDF_ERROR_SYSTEM) != 0;
  DWORD const begin = SkipDelimiters(*seen, 0);
  cursor.bAtTrailer = TextOf(seen->subspan(begin)).starts_with(kTrailer);
  cursor.nAt += begin;
  LONG const target = static_cast<LONG>(cursor.nAt);
  if (sorrelin::ChannelSeek(m_hFile, target, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
    return Fail(PDF_ERROR_SYSTEM) != 0;
  }
  return true;
}

DWORD sorrelin::SessionState::GetRealObjectNumber(DWORD nOffset) {
  if (nOffset == 0) return 0;
  auto const seen = m_pReader->m_Window.Look(m_hFile, nOffset, kObjectHeaderBytes);
  if (!seen) return Fail(PDF_ERROR_SYSTEM);
  if (seen->size() < kObjectHeaderBytes) return 0;
  std::string_view text = TextOf(*seen);
  auto const number = TakeInteger(text);
  bool const header = number && TakeInteger(text);
  text = sorrelin::SkipScanSpace(text);
  return header && text.starts_with("obj") ? static_cast<DWORD>(*number) : Fail(PDF_ERROR_NOT_PDF);
}

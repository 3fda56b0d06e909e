// One section of the stream route: its object, its dictionary, and its records' way into the index.
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/document/stream_object.h>
#include <sorrelin/image/inflate_buffer.h>
#include <sorrelin/platform/string_error.h>
#include <sorrelin/syntax/scanner.h>
#include <sorrelin/syntax/text_integer.h>
#include <sorrelin/syntax/typed_lookup.h>

#include <algorithm>
#include <numeric>

namespace sorrelin {

namespace {

constexpr DWORD kFreeGeneration = 65535;

// The next token of a text that is split at blanks only; empty at its end.
std::string_view TakeToken(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  std::string_view const token = text.substr(0, text.find(' '));
  text.remove_prefix(token.size());
  return token;
}

DWORD TokenValue(std::string_view token) { return static_cast<DWORD>(DecimalValue(token)); }

// `width` bytes at `at`, big-endian. Of more than four only the last count, and what the data lack
// is 0.
DWORD ReadField(std::span<BYTE const> data, uint64_t at, DWORD width) {
  DWORD value = 0;
  for (DWORD i = width > 4 ? width - 4 : 0; i < width; ++i) {
    value = value << 8 | (at + i < data.size() ? data[static_cast<size_t>(at + i)] : 0U);
  }
  return value;
}

}  // namespace

CXRefStm::CXRefStm(DocumentFile& file, ObjectSource* objects)
    : CXRef(file), m_pObjects(objects), m_pDecodeParms(std::make_unique<CDecodeParms>(objects)) {}

int CXRefStm::LoadSection(bool hybrid, bool older) {
  uint64_t const newest = hybrid ? m_nHybridOffset : static_cast<DWORD>(m_nStartXref);
  auto text = m_File.ReadThroughEndobj(older ? m_nPrev : newest);
  m_SectionText = std::move(text).value_or(std::vector<BYTE>{});
  return !m_SectionText.empty() &&
         !BufferContains(m_SectionText.data(), m_SectionText.size(), "trailer");
}

int CXRefStm::ReadTrailerKeys() {
  ObjectId id;
  BYTE* const text = m_SectionText.data();
  uint64_t const size = m_SectionText.size();
  if (GetIntPairAfterKey(text, size, "Root", &id.nNumber, &id.nGeneration) == 0) return 0;
  m_pRoot = std::make_unique<ObjectId>(id);
  if (!BufferContains(text, size, "Info")) return 1;
  if (GetIntPairAfterKey(text, size, "Info", &id.nNumber, &id.nGeneration) == 0) return 0;
  m_pInfo = std::make_unique<ObjectId>(id);
  return 1;
}

int CXRefStm::ParseStreamDict() {
  BYTE* const text = m_SectionText.data();
  uint64_t const size = m_SectionText.size();
  if (GetIntAfterKey(text, size, "/Length", &m_nLength) == 0) return 0;
  m_FilterNames = FindFilterNames(m_pObjects, m_SectionText);
  ReadFieldWidths();
  if (GetIntAfterKey(text, size, "/Size", &m_nSize) == 0) return 0;
  ReadIndexArray();
  DWORD prev = 0;
  if (GetIntAfterKey(text, size, "/Prev", &prev) != 0) m_nPrev = prev;
  return 1;
}

void CXRefStm::ReadFieldWidths() {
  auto const array = FindTypedText(m_pObjects, m_SectionText, "/W", kTypeArray);
  if (!array) return;
  std::string_view rest = *array;
  for (DWORD& width : m_nFieldWidth) width = TokenValue(TakeToken(rest));
}

void CXRefStm::ReadIndexArray() {
  auto const array = FindTypedText(m_pObjects, m_SectionText, "/Index", kTypeArray);
  if (!array) {
    m_Subsections.push_back({0, m_nSize});
    return;
  }
  std::string_view rest = *array;
  for (auto first = TakeToken(rest); !first.empty(); first = TakeToken(rest)) {
    std::string_view const count = TakeToken(rest);
    if (count.empty()) throw SorrelinStringError(SorrelinStringError::kInvalidArgument);
    if (m_Subsections.size() < kIndexRows) {
      m_Subsections.push_back({TokenValue(first), TokenValue(count)});
    } else {
      m_bTooLarge = true;
    }
  }
}

int CXRefStm::DecodeRecords() {
  m_Records.clear();
  m_nRecordCount = 0;
  auto const data = FindStreamData(m_SectionText);
  if (!data) return 0;
  auto const raw = data->first(std::min<size_t>(data->size(), m_nLength));
  m_RawData.assign(raw.begin(), raw.end());
  if (!StartsWithTwoIntegers(m_SectionText) || !InflateSection() || !UndoPredictor()) return 0;
  return ReadRecords() ? 1 : 0;
}

// Kept: the names are not compared, and each pass inflates the raw data again, taking the size of
// what came out for the size of what goes in. Passes beyond the second find nothing new.
bool CXRefStm::InflateSection() {
  uint64_t size = m_nLength;
  for (size_t pass = 0; pass < std::min<size_t>(m_FilterNames.size(), 2); ++pass) {
    if (InflateBuffer(m_RawData, size, m_DecodedData, m_File.work().left()) != kInflated) {
      return false;
    }
    size = m_DecodedData.size();
  }
  if (m_FilterNames.empty()) m_DecodedData = m_RawData;
  m_nDecodedSize = size;
  return true;
}

// Kept: parameters of an earlier section count where a section has none of its own, and the size
// stays what it was with the rows' tags.
bool CXRefStm::UndoPredictor() {
  if (m_nSize <= 1) return true;
  if (auto parms = FindTypedText(m_pObjects, m_SectionText, "/DecodeParms", kTypeDictionary)) {
    m_pDecodeParms->ParseDecodeParms(reinterpret_cast<BYTE*>(parms->data()), parms->size());
  }
  if (!m_pDecodeParms->HasPredictor()) return true;
  uint64_t const lacking = m_nDecodedSize - m_DecodedData.size();
  if (m_nDecodedSize > kMostInflated || !m_File.work().Spend(lacking)) return false;
  m_DecodedData.resize(static_cast<size_t>(m_nDecodedSize));
  return m_pDecodeParms->ApplyPredictor(m_DecodedData) != 0;
}

bool CXRefStm::ReadRecords() {
  uint64_t const widths[] = {m_nFieldWidth[0], m_nFieldWidth[1], m_nFieldWidth[2]};
  uint64_t const record_bytes = widths[0] + widths[1] + widths[2];
  uint64_t limit = 0;
  for (XRefSubsection const& subsection : m_Subsections) limit += subsection.nCount;
  if (record_bytes > 0) limit = std::min(limit, m_nDecodedSize / record_bytes);
  if (limit > kIndexRows) m_bTooLarge = true;
  if (m_bTooLarge || !m_File.work().Spend(limit * sizeof(OffsetMark))) return false;
  m_Records.reserve(static_cast<size_t>(limit));
  for (uint64_t at = 0; m_Records.size() < limit; at += record_bytes) {
    XRefRecord record;
    record.nType = ReadField(m_DecodedData, at, m_nFieldWidth[0]);
    record.nField2 = ReadField(m_DecodedData, at + widths[0], m_nFieldWidth[1]);
    record.nField3 = ReadField(m_DecodedData, at + widths[0] + widths[1], m_nFieldWidth[2]);
    // Kept: a first field of width 0 reads as 0, free, and not as the standard's default.
    if (record.nType == 0) record.nField3 = kFreeGeneration;
    m_Records.push_back(record);
  }
  m_nRecordCount = static_cast<DWORD>(m_Records.size());
  return true;
}

int CXRefStm::MergeRecords() {
  uint64_t const rows =
      uint64_t{m_nSize} + (m_Subsections.empty() ? 0 : m_Subsections.front().nFirst);
  if (rows > kIndexRows) m_bTooLarge = true;
  if (m_bTooLarge) return 0;
  if (m_ObjectIndex.size() < rows) m_ObjectIndex.resize(static_cast<size_t>(rows));
  if (m_Marks.empty()) m_Marks.reserve(m_Records.size());
  size_t next = 0;
  while (!m_Subsections.empty()) {
    XRefSubsection const subsection = m_Subsections.front();
    m_Subsections.pop_front();
    for (DWORD i = 0; i < subsection.nCount && next < m_Records.size(); ++i) {
      MergeRecord(subsection.nFirst + i, m_Records[next++]);
    }
  }
  return 1;
}

// Kept: a free entry protects nothing, so an older section brings the object back.
void CXRefStm::MergeRecord(DWORD number, XRefRecord const& record) {
  bool const in_index = number < m_ObjectIndex.size();
  bool const plain = record.nType == 1;
  if (in_index && m_ObjectIndex[number].nType != 0) {
    if (plain) m_Marks.push_back({record.nField2, nullptr});
    return;
  }
  if (in_index) m_ObjectIndex[number] = {record.nField2, record.nField3, record.nType};
  ObjectExtent& extent = m_Extents[{number, record.nField3}];
  extent = {record.nField2, 0};
  if (plain) m_Marks.push_back({record.nField2, &extent});
}

void CXRefStm::ReleaseSection() {
  m_SectionText = {};
  m_RawData = {};
  m_DecodedData = {};
  m_Records = {};
}

}  // namespace sorrelin

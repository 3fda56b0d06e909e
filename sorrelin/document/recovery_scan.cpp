// The scan of a whole document for object headers, which replaces an index that leads nowhere.
#include <sorrelin/document/cxref.h>
#include <sorrelin/document/cxref_parser.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/text_integer.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace sorrelin {

namespace {

// How many positions after the end of the file are looked at, in what the ring still holds.
constexpr uint64_t kPastEnd = 2000;
constexpr int64_t kTailBytes = 4;
// Beyond this a run of digits has reached its bound in any case.
constexpr size_t kMostDigits = 32;

// How many bytes to go on from `at`: 4 over a hit, else to the byte that broke the keyword.
DWORD StepAt(CXrefParser& parser, DWORD at, bool& hit) {
  hit = false;
  if (parser.GetByte(at) != ' ') return 1;
  if (parser.GetByte(at + 1) != 'o') return 1;
  if (parser.GetByte(at + 2) != 'b') return 2;
  if (parser.GetByte(at + 3) != 'j') return 3;
  hit = true;
  return 4;
}

// The bytes before a position, in pieces: the ring holds only those that were read last.
class BytesBefore {
 public:
  BytesBefore(CXrefParser& parser, DocumentFile& file, DWORD position)
      : parser_(parser), file_(file), position_(position), in_file_(position < file.Size()) {}

  BYTE At(DWORD at) {
    if (!in_file_ || position_ - at <= kHeldByRing) return parser_.GetByte(at);
    DWORD const begin = at / kPieceBytes * kPieceBytes;
    if (piece_.empty() || begin != begin_) piece_ = Piece(begin);
    begin_ = begin;
    return at - begin < piece_.size() ? piece_[at - begin] : BYTE{0};
  }

 private:
  static constexpr DWORD kHeldByRing = CXrefParser::kChunkBytes - 100;
  static constexpr DWORD kPieceBytes = 4096;

  std::vector<BYTE> Piece(DWORD begin) {
    auto const seen = file_.Look(begin, kPieceBytes);
    return seen ? std::vector<BYTE>(seen->begin(), seen->end()) : std::vector<BYTE>{};
  }

  CXrefParser& parser_;
  DocumentFile& file_;
  DWORD position_;
  bool in_file_;  // not in the echo that the ring gives after the file's end
  std::vector<BYTE> piece_;
  DWORD begin_ = 0;
};

// An object header as the scan finds it, read from its end.
struct ScannedHeader {
  DWORD nStart = 0;
  DWORD nNumber = 0;  // 0: none
  DWORD nGeneration = 0;
};

bool IsHeaderByte(BYTE c) { return c == ' ' || IsDecimalDigit(static_cast<char>(c)); }

// Of the blanks and digits before the keyword the first two numbers count. Kept: the walk ends
// at the file's first byte, which belongs to no header; documents begin with "%".
ScannedHeader ReadHeaderBack(BytesBefore bytes, DWORD position) {
  DWORD stop = position;
  while (stop > 0 && IsHeaderByte(bytes.At(stop))) --stop;
  DWORD const start = stop + 1;
  ScannedHeader header{start, 0, 0};
  std::string numbers[2];
  size_t open = 0;
  for (DWORD at = start; at <= position && open < 2; ++at) {
    char const c = static_cast<char>(bytes.At(at));
    if (IsDecimalDigit(c)) {
      if (numbers[open].size() < kMostDigits) numbers[open] += c;
    } else if (!numbers[open].empty()) {
      ++open;
    }
  }
  header.nNumber = static_cast<DWORD>(DecimalValue(numbers[0]));
  header.nGeneration = static_cast<DWORD>(DecimalValue(numbers[1]));
  return header;
}

}  // namespace

int CXRef::IsObjectTextValid(std::span<BYTE const> text, uint64_t size) {
  std::string_view const chars = ByteView{text.data(), text.size()}.Chars();
  auto const position = [](size_t at) {
    return at == std::string_view::npos ? int64_t{-1} : static_cast<int64_t>(at);
  };
  int64_t const keyword = position(chars.find("obj"));
  int64_t end = position(chars.find("endobj"));
  if (end < 0) {
    end = position(chars.rfind('>'));
    if (end < static_cast<int64_t>(size) - kTailBytes) end = -1;
  }
  return keyword < end ? 1 : 0;
}

// Kept: only headers with one blank before "obj" are found, and the first of several versions
// wins; objects in object streams are not found.
void CXRef::RebuildByScan() {
  std::vector<XRefObjectEntry> index;
  ExtentMap extents;
  std::vector<OffsetMark> marks;
  auto const exchange = [&] {
    m_ObjectIndex.swap(index);
    m_Extents.swap(extents);
    m_Marks.swap(marks);
  };
  exchange();
  try {
    ScanForObjects();
  } catch (...) {
    exchange();
    throw;
  }
  m_bRebuilt = true;
}

void CXRef::ScanForObjects() {
  CXrefParser parser(m_File.channel());
  for (uint64_t at = 0; parser.CurrentState() != CXrefParser::kReadFailure;) {
    DWORD const position = static_cast<DWORD>(at);
    bool hit = false;
    at += StepAt(parser, position, hit);
    if (hit) RegisterScannedObject(parser, position);
    bool const ended = parser.CurrentState() == CXrefParser::kEndOfFile;
    if (ended && at >= parser.ReadPosition() + kPastEnd) break;
    if (at > std::numeric_limits<DWORD>::max()) break;
  }
  m_Marks.push_back({static_cast<DWORD>(m_nStartXref), nullptr});
  for (DWORD const offset : m_PrevOffsets) m_Marks.push_back({offset, nullptr});
  FinishExtents();
}

void CXRef::RegisterScannedObject(CXrefParser& parser, DWORD position) {
  ScannedHeader const header = ReadHeaderBack(BytesBefore(parser, m_File, position), position);
  if (header.nNumber == 0) return;
  if (header.nNumber >= kIndexRows) return AddBoundary(header.nStart);
  if (header.nNumber >= m_ObjectIndex.size()) m_ObjectIndex.resize(header.nNumber + 1);
  XRefObjectEntry& entry = m_ObjectIndex[header.nNumber];
  if (entry.nOffset != 0) return AddBoundary(header.nStart);
  entry = {header.nStart, header.nGeneration, 1};
  ObjectExtent& extent = m_Extents[{header.nNumber, header.nGeneration}];
  extent = {header.nStart, 0};
  m_Marks.push_back({header.nStart, &extent});
}

// Of boundaries in a row only the first ends an extent, and a scan finds them in order: the others
// would only take memory.
void CXRef::AddBoundary(uint64_t offset) {
  if (!m_Marks.empty() && m_Marks.back().pExtent == nullptr) return;
  m_Marks.push_back({offset, nullptr});
}

}  // namespace sorrelin

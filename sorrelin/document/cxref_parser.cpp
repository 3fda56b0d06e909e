// The window of the recovery scan: a ring of two chunks.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/cxref_parser.h>
#include <sorrelin/platform/file.h>

#include <algorithm>

namespace sorrelin {

namespace {

// A position this few bytes past the place of the next chunk, or on it, is not read
// yet.
constexpr DWORD kReadAhead = 25;

DWORD ReadUpTo(FileChannel* file, BYTE* out, DWORD bytes) {
  DWORD count = 0;
  return ChannelRead(file, out, bytes, &count, nullptr) != 0 ? count : 0;
}

bool SeekTo(FileChannel* file, DWORD offset) {
  return ChannelSeek(file, static_cast<LONG>(offset), nullptr, FILE_BEGIN) !=
         INVALID_SET_FILE_POINTER;
}

}  // namespace

CXrefParser::CXrefParser(FileChannel* file)
    : m_pFile(file), m_Ring(kRingBytes + 1), m_Chunk(kChunkBytes + 1) {}

BYTE CXrefParser::GetByte(DWORD position) {
  m_nReadIndex = position % m_nRingSize;
  if (m_nState != kEndOfFile) {
    m_nState = kReading;
    if (m_nReadIndex - m_nWriteIndex < kReadAhead && Refill(m_Chunk.data(), m_nChunkSize) == 0) {
      m_nState = kReadFailure;
      return ' ';
    }
  }
  return m_Ring[m_nReadIndex];
}

int CXrefParser::Refill(BYTE* chunk, DWORD& chunk_bytes) {
  m_nState = kRefilling;
  if (!SeekTo(m_pFile, m_nReadPos)) return 0;
  DWORD count = ReadUpTo(m_pFile, chunk, chunk_bytes);
  if (count < chunk_bytes) {
    m_nState = kEndOfFile;
    chunk_bytes = count;
    SeekTo(m_pFile, m_nReadPos);
    count = ReadUpTo(m_pFile, chunk, chunk_bytes);
  }
  m_nReadPos += count;
  count = std::min(count, m_nRingSize - m_nWriteIndex);
  std::copy_n(chunk, count, m_Ring.begin() + m_nWriteIndex);
  m_nWriteIndex += count;
  if (m_nWriteIndex == kRingBytes) m_nWriteIndex = 0;
  return 1;
}

}  // namespace sorrelin

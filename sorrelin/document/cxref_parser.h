// A sliding window over a document for the recovery scan: about 2000 bytes after the read position
// stay in reach.
#ifndef SORRELIN_DOCUMENT_CXREF_PARSER_H_
#define SORRELIN_DOCUMENT_CXREF_PARSER_H_

#include <sorrelin/platform/types.h>

#include <vector>

struct XrefProbe;

namespace sorrelin {

struct FileChannel;

class CXrefParser {
 public:
  enum State : DWORD { kConstructed, kRefilling, kReading, kEndOfFile, kReadFailure };

  // The channel is not owned.
  explicit CXrefParser(FileChannel* file);
  virtual ~CXrefParser() = default;
  CXrefParser(CXrefParser const&) = delete;
  CXrefParser& operator=(CXrefParser const&) = delete;

  // The byte at a position of the file; a blank after a read failure. A position that is not in the
  // window reads as what is in its place there.
  BYTE GetByte(DWORD position);

  State CurrentState() const { return static_cast<State>(m_nState); }
  // Offset of the next read.
  DWORD ReadPosition() const { return m_nReadPos; }

  static constexpr DWORD kRingBytes = 4000;
  static constexpr DWORD kChunkBytes = 2000;

 private:
  friend struct ::XrefProbe;

  // Reads the next chunk into the ring. 0 if the channel cannot be positioned.
  int Refill(BYTE* chunk, DWORD& chunk_bytes);

  FileChannel* m_pFile;
  std::vector<BYTE> m_Ring;
  std::vector<BYTE> m_Chunk;
  DWORD m_nRingSize = kRingBytes;
  DWORD m_nChunkSize = kChunkBytes;  // the short count at the end of the file
  DWORD m_nReadPos = 0;
  DWORD m_nReadIndex = 0;   // in the ring, of the last byte asked for
  DWORD m_nWriteIndex = 0;  // in the ring, of the next refill
  DWORD m_nState = kConstructed;
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_CXREF_PARSER_H_

// The side record of a session: what the reader adds to it, and the information strings.
#ifndef SORRELIN_FRAME_READER_STATE_H_
#define SORRELIN_FRAME_READER_STATE_H_

#include <sorrelin/channel/read_window.h>
#include <sorrelin/document/offset_index.h>
#include <sorrelin/platform/process.h>
#include <sorrelin/platform/types.h>
#include <sorrelin/platform/wide_string.h>

#include <cstdint>
#include <optional>

namespace sorrelin {

struct FileChannel;
class CXRefStm;
class ObjectStreamList;

struct ReaderState {
  CXRefStm* m_pXRef = nullptr;                   // owned; null when no document is open
  ObjectStreamList* m_pObjectStreams = nullptr;  // owned; null when no document is open
  FileChannel* m_pChannel = nullptr;             // the session's channel, kept in step with it
  DWORD m_bStreamIndex = 0;                      // 1: the document was opened by the stream route
  DWORD m_nPageCounter = 0;                      // slots that the page tree walk has filled
  WideString m_Title;
  WideString m_Author;
  WideString m_Subject;
  WideString m_Keywords;
  bool m_bOutlivesSession = false;           // the record is left behind, with its strings
  std::optional<SYSTEMTIME> m_CreationTime;  // of the next document; otherwise that of now

  // What reading remembers of the open document
  ReadWindow m_Window;                     // the file around the last look at it
  OffsetIndex m_Offsets;                   // the object table by offset
  std::optional<DWORD> m_nDocumentBytes;   // the size of a document that nobody writes
  uint64_t m_nNoEndobjFrom = UINT64_MAX;   // from here on the document has no "endobj"
  DWORD m_nTableEntriesLeft = UINT32_MAX;  // how many the classic sections may still list
  bool m_bOpening = false;                 // the document is being opened
  uint64_t m_nWorkLeft = UINT64_MAX;       // bytes that fetches may still handle
  DWORD m_nFetchDepth = 0;                 // fetches that run inside one another

  // Takes the bytes that a fetch handles off what is left; false if they are more. Opening a
  // document may handle far more bytes than any document needs, and little enough that one made to
  // waste time is open soon.
  bool Spend(uint64_t bytes) {
    bool const enough = bytes <= m_nWorkLeft;
    m_nWorkLeft -= enough ? bytes : m_nWorkLeft;
    return enough;
  }

  // Forgets what depends on the rows of the object table and on the bytes of the file. Whoever
  // changes a row calls this.
  void ForgetTableFacts() {
    m_Window.Clear();
    m_Offsets.Clear();
    m_nDocumentBytes.reset();
    m_nNoEndobjFrom = UINT64_MAX;
  }
};

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_READER_STATE_H_

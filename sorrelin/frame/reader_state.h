// The side record of a session: what the reader adds to it, and the information strings.
#ifndef SORRELIN_FRAME_READER_STATE_H_
#define SORRELIN_FRAME_READER_STATE_H_

#include <sorrelin/platform/types.h>
#include <sorrelin/platform/wide_string.h>

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
};

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_READER_STATE_H_

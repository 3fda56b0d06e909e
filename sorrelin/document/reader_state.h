// The side record of a session: the document that it reads, and the information strings.
#ifndef SORRELIN_DOCUMENT_READER_STATE_H_
#define SORRELIN_DOCUMENT_READER_STATE_H_

#include <sorrelin/document/document_file.h>
#include <sorrelin/document/indexed_objects.h>
#include <sorrelin/platform/process.h>
#include <sorrelin/platform/types.h>
#include <sorrelin/platform/wide_string.h>

#include <cstdint>
#include <optional>

namespace sorrelin {

struct ReaderState {
  DocumentFile file;  // of the session's channel, kept in step with it
  IndexedObjects objects{file};
  DWORD page_counter = 0;                 // slots that the page tree walk has filled
  DWORD table_entries_left = UINT32_MAX;  // how many the classic sections may still list
  WideString m_Title;
  WideString m_Author;
  WideString m_Subject;
  WideString m_Keywords;
  bool m_bOutlivesSession = false;           // the record is not freed, nor its strings
  std::optional<SYSTEMTIME> m_CreationTime;  // of the next document; otherwise that of now
};

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_READER_STATE_H_

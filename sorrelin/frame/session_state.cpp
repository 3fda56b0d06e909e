// A session's state at its start, and its last error.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/frame/banner.h>
#include <sorrelin/frame/error_text.h>
#include <sorrelin/frame/session_state.h>

#include <algorithm>
#include <iterator>

namespace sorrelin {

namespace {

// Of its own, because pdf_Release_PDF leaves the record behind.
SORRELIN_NOINLINE ReaderState* NewSideRecord() { return new ReaderState; }

void FreeSideRecord(ReaderState* record) {
  record->objects.Close();
  if (!record->m_bOutlivesSession) delete record;
}

}  // namespace

SessionState::SessionState()
    : m_hFile(InvalidChannel()), m_pReader(NewSideRecord(), FreeSideRecord) {
  static_assert(std::size(kWideCreator) <= kCreatorUnits);
  std::copy(std::begin(kWideCreator), std::end(kWideCreator), m_szCreator);
  InitObjectList();
}

void SessionState::PDF_SetLastError(DWORD nError) { m_nLastError = nError; }

DWORD SessionState::PDF_GetLastError() { return m_nLastError; }

bool SessionState::Report(Status status) {
  if (m_pReader != nullptr) {
    if (auto const noted = m_pReader->file.TakeNote()) m_nLastError = *noted;
  }
  if (status.code()) m_nLastError = *status.code();
  return status.ok();
}

ObjectLoader SessionState::Objects() {
  m_pReader->file.TakeNote();
  return {m_pReader->file, m_pReader->objects, m_Objects};
}

}  // namespace sorrelin

// A session and its state: how both begin, are copied and end.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/reader_state.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/platform/lasting_block.h>
#include <sorrelin/writer/banner.h>
#include <sorrelin/writer/draft.h>

#include <algorithm>
#include <iterator>
#include <new>

namespace sorrelin {

namespace {

// Of its own, because pdf_Release_PDF does not free the record.
SORRELIN_NOINLINE ReaderState* NewSideRecord() { return Lasting(new ReaderState); }

void FreeSideRecord(ReaderState* record) {
  record->objects.Close();
  if (!record->m_bOutlivesSession) delete record;
}

}  // namespace

SessionState::SessionState() : m_pReader(NewSideRecord(), FreeSideRecord) {
  static_assert(std::size(kNarrowCreator) <= kCreatorUnits);
  std::copy(std::begin(kNarrowCreator), std::end(kNarrowCreator), m_szCreator);
}

bool SessionState::Report(Status status) {
  if (m_pReader != nullptr) {
    if (auto const noted = m_pReader->file.TakeNote()) m_nLastError = *noted;
  }
  if (status.code()) m_nLastError = *status.code();
  return status.ok();
}

void SessionState::DropNote() {
  if (m_pReader != nullptr) m_pReader->file.TakeNote();
}

ObjectLoader SessionState::Objects() {
  DropNote();
  return {m_pReader->file, m_pReader->objects, m_Objects};
}

Draft SessionState::Document() {
  return {m_Output, m_Objects, m_Pages, m_Facts, m_Update, *m_pReader};
}

DWORD SessionState::ReservePagesRoot() {
  ObjectWriter out = Document().Writer();
  m_Facts.pages_root = Take(out.Outcome(out.Reserve()));
  return m_Facts.pages_root;
}

void SessionState::TakeChannel(FileChannel* channel, DocumentFile::Growth growth) {
  m_Output.channel = channel;
  m_pReader->file.SetChannel(channel, growth);
}

void SessionState::Close() {
  m_pReader->objects.Close();
  if (m_Output.channel == InvalidChannel()) return;
  ChannelClose(m_Output.channel);
  TakeChannel(InvalidChannel(), DocumentFile::Growth::kGrows);
}

void SessionState::CloseTake(int64_t* data, DWORD* size) {
  m_pReader->objects.Close();
  if (m_Output.channel == InvalidChannel()) return;
  ChannelCloseTake(m_Output.channel, data, size);
  TakeChannel(InvalidChannel(), DocumentFile::Growth::kGrows);
}

void SessionState::CloseOpenDocument() {
  if (IsUsableChannel(m_Output.channel)) Close();
}

void SessionAccess::LeaveSideRecord(CCreatePDF& session) {
  SessionState* const state = session.m_pState;
  if (state != nullptr && state->m_pReader) state->m_pReader->m_bOutlivesSession = true;
}

}  // namespace sorrelin

namespace {

sorrelin::SessionState* NewState() {
  try {
    return new sorrelin::SessionState;
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

}  // namespace

CCreatePDF::CCreatePDF() : m_pState(NewState()) {}

// Kept: the channel stays open; ClosePDFFile is what closes it.
CCreatePDF::~CCreatePDF() { delete m_pState; }

CCreatePDF& CCreatePDF::operator=(CCreatePDF const& other) {
  if (m_pState != nullptr && other.m_pState != nullptr) {
    *m_pState = *other.m_pState;
  } else if (this != &other) {
    delete m_pState;
    m_pState = other.m_pState != nullptr ? new (std::nothrow)
                                               sorrelin::SessionState(*other.m_pState)
                                         : nullptr;
  }
  return *this;
}

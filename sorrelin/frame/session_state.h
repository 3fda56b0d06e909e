// The state of a session: the writer's and the reader's members, and the operations over them. Not
// installed.
#ifndef SORRELIN_FRAME_SESSION_STATE_H_
#define SORRELIN_FRAME_SESSION_STATE_H_

#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/frame/session.h>
#include <sorrelin/image/decoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/status.h>
#include <sorrelin/writer/object_writer.h>
#include <sorrelin/writer/update_facts.h>

#include <memory>

namespace sorrelin {

struct Draft;
struct ReaderState;

// Copies share the channel and the side record.
struct SessionState {
  SessionState();

  static constexpr DWORD kObjectRows = ObjectTable::kRows;
  static constexpr DWORD kPageSlots = PageList::kSlots;
  static constexpr DWORD kCreatorUnits = 260;

  // Sets the code and returns 0.
  DWORD Fail(DWORD nError) {
    m_nLastError = nError;
    return 0;
  }
  // Sets the code that an operation noted, then that of its outcome, if any. Whether it succeeded.
  bool Report(Status status);
  // Forgets the code that an operation noted before it ended otherwise.
  void DropNote();

  // The way to the objects of the open document.
  ObjectLoader Objects();

  // The same for a result: its value, or 0.
  template <typename T>
  T Take(Result<T> const& result) {
    return Report(result.status()) ? result.value() : T();
  }

  // The same for a block: what the coder or decoder left in it.
  void* TakeBlock(Result<OwnedBlock> result) {
    static_cast<void>(Report(result.status()));
    return result.value().Release();
  }

  // What the image last read says of its bits.
  Polarity ImagePolarity() const { return {m_bBlackIs1 != 0, m_bDecodeNormal != 0}; }

  // The document under way.
  Draft Document();
  // Takes a number for the pages root and remembers it as that.
  DWORD ReservePagesRoot();

  void TakeChannel(FileChannel* channel, DocumentFile::Growth growth);
  // Close what is open; a document in memory is freed or handed over.
  void Close();
  void CloseTake(int64_t* data, DWORD* size);
  void CloseOpenDocument();

  // Defaults of the page layout, which no operation reads.
  DWORD m_nLayoutDefault0 = 10;
  DWORD m_nDefaultPageHeight = 792;  // points
  DWORD m_nDefaultPageWidth = 612;   // points
  DWORD m_nLayoutDefault1 = 12;
  DWORD m_nLayoutDefault2 = 1;
  DWORD m_nLayoutDefault3 = 40;
  Output m_Output;
  WCHAR m_szCreator[kCreatorUnits] = {};
  ObjectTable m_Objects;
  PageList m_Pages;
  DWORD m_nLastError = PDF_ERROR_NOT_INITIALIZED;
  DocumentFacts m_Facts;
  DWORD m_bBlackIs1 = 0;
  DWORD m_bDecodeNormal = 1;
  DWORD m_nProcSetFlags = 0;  // 1: ImageB, 2: ImageI, 4: ImageC
  Update m_Update;
  std::shared_ptr<ReaderState> m_pReader;
};

// The way from a session to its state, which is null where memory was short at its making.
struct SessionAccess {
  static SessionState* Of(CCreatePDF& session) { return session.m_pState; }

  // The session's end leaves its side record allocated.
  static void LeaveSideRecord(CCreatePDF& session);
};

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_SESSION_STATE_H_

// The fetch of an object's text through the index of the stream route.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/cxref_stm.h>
#include <sorrelin/document/object_fetch.h>
#include <sorrelin/document/object_stream.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/syntax/byte_view.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace sorrelin {

namespace {

// References that lead back to themselves end here.
constexpr DWORD kFetchLevels = 32;
constexpr uint64_t kBaseWork = 128 * 1024 * 1024;
constexpr uint64_t kWorkPerByte = 64;

class FetchLevel {
 public:
  explicit FetchLevel(ReaderState& state) : state_(state) { ++state_.m_nFetchDepth; }
  ~FetchLevel() { --state_.m_nFetchDepth; }
  FetchLevel(FetchLevel const&) = delete;
  FetchLevel& operator=(FetchLevel const&) = delete;

 private:
  ReaderState& state_;
};

struct FreeBlock {
  void operator()(BYTE* block) const { std::free(block); }
};
using HeapBlock = std::unique_ptr<BYTE, FreeBlock>;

// An object that is no stream has its NUL bytes as blanks, so that scans see all of it.
void BlankNuls(BYTE* text, DWORD bytes) {
  ByteView const view{text, bytes};
  bool const stream = view.Text().find("/Filter") != std::string_view::npos ||
                      view.Text().find("stream") != std::string_view::npos;
  if (!stream) std::replace(text, text + bytes, BYTE{0}, BYTE{' '});
}

// False if the text that the index leads to cannot be an object.
bool FetchPlain(ReaderState& state, ObjectBytes* out, ObjectId id) {
  auto const entry = state.m_pXRef->Extents().find(id);
  // An extent that ends before it starts belongs to the document's last object.
  if (entry == state.m_pXRef->Extents().end() || entry->second.nEnd < entry->second.nStart) {
    return true;
  }
  ObjectExtent const extent = entry->second;
  DWORD const bytes = extent.nEnd - extent.nStart;
  // Behind the file there is no text, and looking there costs nothing.
  if (extent.nStart >= ChannelGetSize(state.m_pChannel, nullptr)) return false;
  // What the file lacks of the extent stays 0.
  if (!state.Spend(bytes)) return true;
  HeapBlock block(static_cast<BYTE*>(std::calloc(size_t{bytes} + 2, 1)));
  if (block == nullptr) return true;
  auto const read = state.m_Window.Read(state.m_pChannel, extent.nStart, block.get(), bytes);
  LONG const end = static_cast<LONG>(extent.nStart + read.value_or(0));
  ChannelSeek(state.m_pChannel, end, nullptr, FILE_BEGIN);
  BlankNuls(block.get(), bytes);
  if (CXRefStm::IsObjectTextValid(block.get(), bytes) == 0) return false;
  *out = {block.release(), bytes + 2, bytes != 0 ? 1U : 0U};
  return true;
}

XRefObjectEntry EntryOf(CXRefStm& xref, DWORD number) {
  return number < xref.ObjectIndex().size() ? xref.ObjectIndex()[number] : XRefObjectEntry{};
}

bool FetchIndexed(ReaderState& state, ObjectBytes* out, ObjectId id) {
  CXRefStm& xref = *state.m_pXRef;
  XRefObjectEntry const entry = EntryOf(xref, id.nNumber);
  if (entry.nType != 2) return FetchPlain(state, out, id);
  // Kept: a stream that the index does not know is looked for at the start of the file.
  DWORD const stream = xref.Extents()[{static_cast<DWORD>(entry.nOffset), 0}].nStart;
  if (state.m_pObjectStreams != nullptr) state.m_pObjectStreams->Fetch(stream, id.nNumber, out);
  return true;
}

}  // namespace

void LoadObjectBytes(ReaderState* state, ObjectBytes* out, DWORD number, DWORD generation) {
  *out = {};
  if (state == nullptr || state->m_bStreamIndex == 0 || state->m_pXRef == nullptr ||
      !IsUsableChannel(state->m_pChannel) || state->m_nFetchDepth == kFetchLevels) {
    return;
  }
  if (!state->m_bOpening && state->m_nFetchDepth == 0) state->m_nWorkLeft = WorkFor(*state);
  FetchLevel const level(*state);
  ObjectId const id{number, generation};
  if (FetchIndexed(*state, out, id) || state->m_pXRef->IsRebuilt()) return;
  state->m_pXRef->RebuildByScan();
  FetchIndexed(*state, out, id);
}

uint64_t WorkFor(ReaderState const& state) {
  return kBaseWork + kWorkPerByte * ChannelGetSize(state.m_pChannel, nullptr);
}

void DestroyReaderObjects(ReaderState& state) {
  delete state.m_pXRef;
  state.m_pXRef = nullptr;
  delete state.m_pObjectStreams;
  state.m_pObjectStreams = nullptr;
  state.ForgetTableFacts();
}

}  // namespace sorrelin

// The fetch of an object's text through the index of the stream route.
#include <sorrelin/document/cxref.h>
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/indexed_objects.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_bytes.h>
#include <sorrelin/document/object_stream.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/syntax/byte_view.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace sorrelin {

namespace {

// An object that is no stream has its NUL bytes as blanks, so that scans see all of it. All bytes
// after the first `held` are NUL; there may be very many.
void BlankNuls(std::span<BYTE> text, size_t held) {
  std::string_view const front = ByteView{text.data(), held}.Text();
  bool const stream = front.find("/Filter") != std::string_view::npos ||
                      front.find("stream") != std::string_view::npos;
  if (stream) return;
  std::span<BYTE> const before = text.first(held);
  std::replace(before.begin(), before.end(), BYTE{0}, BYTE{' '});
  std::memset(text.data() + held, ' ', text.size() - held);
}

}  // namespace

IndexedObjects::IndexedObjects(DocumentFile& file) : file_(file) {}
IndexedObjects::~IndexedObjects() = default;

void IndexedObjects::Open(std::unique_ptr<CXRef> index, bool used) {
  streams_ = std::make_unique<ObjectStreamList>(file_, *this);
  index_ = std::move(index);
  used_ = used;
}

void IndexedObjects::Close() {
  index_.reset();
  streams_.reset();
  file_.Forget();
}

ObjectBytes IndexedObjects::Fetch(DWORD number, DWORD generation) {
  ObjectBytes out;
  if (!used_ || index_ == nullptr || !file_.IsOpen()) return out;
  WorkBudget::Fetch const fetch(file_.work(), file_.Size());
  ObjectId const id{number, generation};
  if (fetch.IsTooDeep() || FetchIndexed(id, out) || index_->IsRebuilt()) return out;
  index_->RebuildByScan();
  FetchIndexed(id, out);
  return out;
}

// False if the text that the index leads to cannot be an object.
bool IndexedObjects::FetchIndexed(ObjectId id, ObjectBytes& out) {
  XRefObjectEntry const entry = index_->EntryOf(id.nNumber);
  if (entry.nType != 2) return FetchPlain(id, out);
  out = streams_->Fetch(StreamOffset(entry), id.nNumber);
  return true;
}

// Kept: a stream that the index does not know is looked for at the start of the file.
DWORD IndexedObjects::StreamOffset(XRefObjectEntry const& entry) {
  return index_->Extents()[{static_cast<DWORD>(entry.nOffset), 0}].nStart;
}

bool IndexedObjects::Lacks(DWORD number, std::string_view key) {
  if (!used_ || index_ == nullptr || !file_.IsOpen()) return false;
  XRefObjectEntry const entry = index_->EntryOf(number);
  WorkBudget::Fetch const fetch(file_.work(), file_.Size());
  return entry.nType == 2 && !fetch.IsTooDeep() &&
         streams_->Lacks(StreamOffset(entry), number, key);
}

bool IndexedObjects::FetchPlain(ObjectId id, ObjectBytes& out) {
  ObjectExtent const* const known = index_->Extents().Find(id);
  // An extent that ends before it starts belongs to the document's last object.
  if (known == nullptr || known->nEnd < known->nStart) return true;
  ObjectExtent const extent = *known;
  DWORD const bytes = extent.nEnd - extent.nStart;
  // After the file's end there is no text, and looking there costs nothing.
  if (extent.nStart >= file_.Size()) return false;
  // What the file lacks of the extent stays 0.
  if (!file_.work().Spend(bytes)) return true;
  OwnedBlock block = NewOwnedBlock(GHND, uint64_t{bytes} + 2);
  LockedBlock lock(block.get());
  if (!lock) throw std::bad_alloc();
  std::span<BYTE> const text = lock.bytes().first(bytes);
  auto const read = file_.Read(extent.nStart, text.data(), bytes);
  file_.SeekTo(extent.nStart + read.value_or(0));
  BlankNuls(text, read.value_or(0));
  if (CXRef::IsObjectTextValid(text.first(read.value_or(0)), bytes) == 0) return false;
  out = {std::move(block), bytes != 0, read.value_or(0)};
  return true;
}

std::optional<std::string> IndexedObjects::TextOf(DWORD number) {
  ObjectBytes object = Fetch(number, 0);
  if (!object.valid) return std::nullopt;
  return std::string(LoadedObject(std::move(object)).Front());
}

}  // namespace sorrelin

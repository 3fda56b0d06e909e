// The cache of decoded object streams.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/reader/object_stream.h>

#include <algorithm>

namespace sorrelin {

namespace {

constexpr size_t kMostStreams = 49;
// More decoded bytes than this are not kept, however few streams they are of.
constexpr uint64_t kMostHeldBytes = 16 * 1024 * 1024;
// What opening a document, or one fetch behind it, may read and inflate for object streams: far
// more than any document needs, and little enough that one made to waste time ends soon.
constexpr uint64_t kBaseWork = 256 * 1024 * 1024;
constexpr uint64_t kWorkPerByte = 64;

uint64_t WorkFor(ReaderState const& state) {
  return kBaseWork + kWorkPerByte * ChannelGetSize(state.m_pChannel, nullptr);
}

// An offset that stands in a list for the time of a scope.
class Entered {
 public:
  Entered(std::vector<uint64_t>& offsets, uint64_t offset) : offsets_(offsets) {
    offsets_.push_back(offset);
  }
  ~Entered() { offsets_.pop_back(); }
  Entered(Entered const&) = delete;
  Entered& operator=(Entered const&) = delete;

 private:
  std::vector<uint64_t>& offsets_;
};

}  // namespace

ObjectStreamList::ObjectStreamList(ReaderState* state)
    : state_(state), work_left_(WorkFor(*state)) {}

void ObjectStreamList::Fetch(uint64_t stream_offset, DWORD number, ObjectBytes* out) {
  if (!opening_ && state_->m_nFetchDepth <= 1) work_left_ = WorkFor(*state_);
  ObjectStreamReader const* reader = Find(stream_offset);
  if (reader == nullptr) reader = Build(stream_offset);
  if (reader != nullptr) reader->Serve(number, out);
}

ObjectStreamReader const* ObjectStreamList::Find(uint64_t stream_offset) const {
  auto const entry = std::find_if(streams_.begin(), streams_.end(), [&](auto const& stream) {
    return stream.first == stream_offset;
  });
  return entry != streams_.end() ? entry->second.get() : nullptr;
}

// Building may fetch objects, and so come back here for other streams.
ObjectStreamReader const* ObjectStreamList::Build(uint64_t stream_offset) {
  bool const entered =
      std::find(in_progress_.begin(), in_progress_.end(), stream_offset) != in_progress_.end();
  if (entered || work_left_ == 0) return nullptr;
  std::unique_ptr<ObjectStreamReader> reader;
  {
    Entered const entry(in_progress_, stream_offset);
    reader = std::make_unique<ObjectStreamReader>(state_, stream_offset);
  }
  work_left_ -= std::min(work_left_, reader->Work() + 1);
  held_bytes_ += reader->HeldBytes();
  streams_.emplace_back(stream_offset, std::move(reader));
  Evict();
  return streams_.back().second.get();
}

void ObjectStreamList::Evict() {
  while (streams_.size() > kMostStreams || (streams_.size() > 1 && held_bytes_ > kMostHeldBytes)) {
    held_bytes_ -= streams_.front().second->HeldBytes();
    streams_.pop_front();
  }
}

}  // namespace sorrelin

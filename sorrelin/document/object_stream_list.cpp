// The cache of decoded object streams.
#include <sorrelin/document/object_stream.h>

#include <algorithm>

namespace sorrelin {

namespace {

constexpr size_t kMostStreams = 49;
// More decoded bytes than this are not kept, however few streams they are of.
constexpr uint64_t kMostHeldBytes = 128 * 1024 * 1024;

// An offset that is in a list for the time of a scope.
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

ObjectBytes ObjectStreamList::Fetch(uint64_t stream_offset, DWORD number) {
  ObjectStreamReader const* const reader = Open(stream_offset);
  bool const served = reader != nullptr && file_.work().Spend(reader->SizeOf(number));
  return served ? reader->Serve(number) : ObjectBytes{};
}

bool ObjectStreamList::Lacks(uint64_t stream_offset, DWORD number, std::string_view key) {
  ObjectStreamReader const* const reader = Open(stream_offset);
  return reader != nullptr && reader->Lacks(number, key) &&
         file_.work().Spend(reader->SizeOf(number));
}

ObjectStreamReader const* ObjectStreamList::Open(uint64_t stream_offset) {
  ObjectStreamReader const* const reader = Find(stream_offset);
  return reader != nullptr ? reader : Build(stream_offset);
}

// Objects that are fetched one after the other mostly are in the stream that came last.
ObjectStreamReader const* ObjectStreamList::Find(uint64_t stream_offset) const {
  auto const entry = std::find_if(streams_.rbegin(), streams_.rend(), [&](auto const& stream) {
    return stream.first == stream_offset;
  });
  return entry != streams_.rend() ? entry->second.get() : nullptr;
}

// Building may fetch objects, and so come back here for other streams.
ObjectStreamReader const* ObjectStreamList::Build(uint64_t stream_offset) {
  bool const entered =
      std::find(in_progress_.begin(), in_progress_.end(), stream_offset) != in_progress_.end();
  if (entered || !file_.work().Spend(1)) return nullptr;
  std::unique_ptr<ObjectStreamReader> reader;
  {
    Entered const entry(in_progress_, stream_offset);
    reader = std::make_unique<ObjectStreamReader>(file_, objects_, stream_offset);
  }
  // A stream that the work did not suffice for may be readable to the next fetch.
  if (file_.work().IsUsedUp()) return nullptr;
  streams_.emplace_back(stream_offset, std::move(reader));
  held_bytes_ += streams_.back().second->HeldBytes();
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

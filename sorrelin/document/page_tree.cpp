// The page tree, walked into the flat list of page objects.
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/frame/session_state.h>
#include <sorrelin/syntax/byte_view.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/number_scan.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using sorrelin::kNotFound;
using sorrelin::LastByte;
using sorrelin::NumberScan;

// Kept: any object whose text mentions this is a node; every other kid is a page, loaded or not.
constexpr char kNodeKey[] = "/Kids";

struct Kids {
  std::vector<DWORD> objects;
  bool closed = false;  // "]" was met
};

// The object numbers behind "Kids": every first number of two.
Kids ReadKids(BYTE* data, DWORD size) {
  Kids kids;
  uint64_t const match = sorrelin::FindKey(data, size, "Kids", LastByte::kKept);
  if (match == kNotFound) return kids;
  NumberScan scan({data, size}, match, sorrelin::kKidsRule);
  bool is_object = true;
  NumberScan::Event event = scan.Next();
  for (; event == NumberScan::Event::kNumber; event = scan.Next()) {
    if (is_object) kids.objects.push_back(scan.value());
    is_object = !is_object;
  }
  kids.closed = event == NumberScan::Event::kStopped;
  return kids;
}

struct TreeLimits {
  size_t pages;  // that may still be listed
  size_t nodes;
};

// Depth first, in the document's order. The nodes on the way down are kept as lists of the kids
// that are still to come, so that neither the stack nor memory grows with what a damaged tree
// claims.
class PageTreeWalk {
 public:
  // `list_page` takes the object number of the next page.
  PageTreeWalk(sorrelin::SessionState& session, TreeLimits limits,
               std::function<void(DWORD)> list_page)
      : session_(session), limits_(limits), list_page_(std::move(list_page)) {}

  // `root` is 0 if the kids' node has no number of its own. False if the tree has more pages or
  // nodes than there is room for.
  bool Run(DWORD root, Kids kids) {
    if (!Enter(root, std::move(kids))) return false;
    while (!path_.empty()) {
      if (path_.back().next == path_.back().kids.size()) {
        Leave();
      } else if (!Visit(path_.back().kids[path_.back().next++])) {
        return false;
      }
    }
    return true;
  }

 private:
  struct Level {
    DWORD node;
    std::vector<DWORD> kids;
    size_t next;
  };

  // Starts a node. Its own ancestors among its kids, itself included, are left out. Each kid that
  // stays will take the room of a page or of a node, so that more kids than room end the walk
  // early.
  bool Enter(DWORD node, Kids kids) {
    if (limits_.nodes == 0) return false;
    --limits_.nodes;
    if (node != 0) ancestors_.insert(node);
    std::erase_if(kids.objects, [this](DWORD kid) { return ancestors_.count(kid) != 0; });
    pending_ += kids.objects.size();
    path_.push_back({node, std::move(kids.objects), 0});
    return pending_ <= limits_.pages + limits_.nodes;
  }

  void Leave() {
    ancestors_.erase(path_.back().node);
    path_.pop_back();
  }

  bool Visit(DWORD object) {
    --pending_;
    sorrelin::LoadedObject const text(session_.LoadObject(object));
    if (text.size() != 0 && session_.IsFlagSet(text.data(), text.size(), kNodeKey) != 0) {
      return Enter(object, ReadKids(text.data(), text.size()));
    }
    if (limits_.pages == 0) return false;
    --limits_.pages;
    list_page_(object);
    return true;
  }

  sorrelin::SessionState& session_;
  TreeLimits limits_;
  std::function<void(DWORD)> list_page_;
  std::vector<Level> path_;
  std::unordered_set<DWORD> ancestors_;
  size_t pending_ = 0;  // kids of all nodes on the path that are still to come
};

}  // namespace

int sorrelin::SessionState::ParseKids(BYTE* pData, DWORD nSize) {
  if (pData == nullptr || nSize == 0 || m_pReader == nullptr) {
    Fail(PDF_ERROR_INVALID_HANDLE);
    return 0;
  }
  Kids kids = ReadKids(pData, nSize);
  bool const closed = kids.closed;
  DWORD& counter = m_pReader->m_nPageCounter;
  size_t const room = kPageSlots - std::min(counter, kPageSlots);
  PageTreeWalk walk(*this, {room, kObjectRows},
                    [this, &counter](DWORD page) { SetPageObjectNumber(counter++, page); });
  DWORD const root = IsFlagSet(pData, nSize, kNodeKey) != 0 ? m_nPagesRootObject : 0;
  return walk.Run(root, std::move(kids)) && closed ? 1 : 0;
}

int sorrelin::SessionState::LoadPageObject(DWORD nObject) {
  sorrelin::LoadedObject const page(LoadObject(nObject));
  if (page.data() == nullptr) return 0;
  DWORD number = 0;
  DWORD generation = 0;
  if (GetObjectType(page.data(), page.size()) == 1 &&
      GetValue(page.data(), page.size(), "/Resources", &number, &generation) != 0 &&
      GetValue(page.data(), page.size(), "/Contents", &number, &generation) != 0) {
    return 1;
  }
  Fail(PDF_ERROR_OBJECT_TYPE);
  return 0;
}

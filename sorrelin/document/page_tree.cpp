// The page tree, flattened into a list of page objects.
#include <sorrelin/document/document_file.h>
#include <sorrelin/document/loaded_object.h>
#include <sorrelin/document/object_loader.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/document/page_tree.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/syntax/key_search.h>
#include <sorrelin/syntax/number_scan.h>
#include <sorrelin/syntax/value_scan.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace sorrelin {

namespace {

// Kept: any object whose text mentions this is a node; every other kid is a page, loaded or not.
constexpr char kNodeKey[] = "/Kids";

struct Kids {
  std::vector<DWORD> objects;
  bool closed = false;  // "]" was met
};

// The object numbers after "Kids": every first number of two.
Kids ReadKids(std::span<BYTE> node) {
  Kids kids;
  uint64_t const match = FindKey(node.data(), node.size(), "Kids", LastByte::kKept);
  if (match == kNotFound) return kids;
  NumberScan scan({node.data(), node.size()}, match, kKidsRule);
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
  PageTreeWalk(ObjectLoader& objects, TreeLimits limits, std::function<void(DWORD)> list_page)
      : objects_(objects), limits_(limits), list_page_(std::move(list_page)) {}

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

  // Most kids are pages, which need not be loaded where that can be seen.
  bool Visit(DWORD object) {
    --pending_;
    if (!objects_.Lacks(object, kNodeKey)) {
      LoadedObject const node = objects_.Open(object);
      if (node && HoldsKey(node.text(), kNodeKey)) return Enter(object, ReadKids(node.text()));
    }
    if (limits_.pages == 0) return false;
    --limits_.pages;
    list_page_(object);
    return true;
  }

  ObjectLoader& objects_;
  TreeLimits limits_;
  std::function<void(DWORD)> list_page_;
  std::vector<Level> path_;
  std::unordered_set<DWORD> ancestors_;
  size_t pending_ = 0;  // kids of all nodes on the path that are still to come
};

}  // namespace

bool ListPages(ObjectLoader& objects, std::span<BYTE> node, DWORD root, PageList& pages,
               DWORD& counter) {
  Kids kids = ReadKids(node);
  bool const closed = kids.closed;
  size_t const room = PageList::kSlots - std::min(counter, PageList::kSlots);
  PageTreeWalk walk(objects, {room, ObjectTable::kRows},
                    [&](DWORD page) { pages.Set(counter++, page); });
  return walk.Run(HoldsKey(node, kNodeKey) ? root : 0, std::move(kids)) && closed;
}

Status TestPageObject(ObjectLoader& objects, DWORD number) {
  LoadedObject const page = objects.Open(number);
  if (!page) return Status::Failed();
  DWORD reference = 0;
  DWORD generation = 0;
  bool const looks_like_one = ObjectType(page.text()) == 1 &&
                              FindPair(page.text(), "/Resources", &reference, &generation) &&
                              FindPair(page.text(), "/Contents", &reference, &generation);
  return looks_like_one ? Status::Ok() : Status::Failed(PDF_ERROR_OBJECT_TYPE);
}

// Kept: the token after the key is never a name, so that the answer is 1 for ordinary objects;
// TestPageObject goes by that.
DWORD ObjectType(std::span<BYTE> text) {
  return FindToken(text, "/Type").value_or(std::string_view()) == "/Page" ? 2 : 1;
}

}  // namespace sorrelin

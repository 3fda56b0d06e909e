// The page tree, flattened into a list of page objects.
#ifndef SORRELIN_DOCUMENT_PAGE_TREE_H_
#define SORRELIN_DOCUMENT_PAGE_TREE_H_

#include <sorrelin/platform/status.h>
#include <sorrelin/platform/types.h>

#include <span>

namespace sorrelin {

class ObjectLoader;
class PageList;

// Lists the pages under a node, given by its text, from slot `counter` on, which moves with them.
// `root` is the number of the pages root, in case the node is that. False if the node's kids are no
// closed array, or the tree has more pages or nodes than there is room for.
bool ListPages(ObjectLoader& objects, std::span<BYTE> node, DWORD root, PageList& pages,
               DWORD& counter);

// Whether an object looks like a page. Code 34 for one that does not.
Status TestPageObject(ObjectLoader& objects, DWORD number);

// 1 for ordinary objects, whatever they are.
DWORD ObjectType(std::span<BYTE> text);

}  // namespace sorrelin

#endif  // SORRELIN_DOCUMENT_PAGE_TREE_H_

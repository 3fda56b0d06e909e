// Child processes for work on documents: the library ends the process on some damaged ones.
#ifndef TOOLS_DOCUMENTS_CHILD_H_
#define TOOLS_DOCUMENTS_CHILD_H_

#include <sorrelin/platform/child.h>
#include <sorrelin/platform/types.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace sorrelin::tool {

// The problem of a document, or a page, that ended its reader.
inline constexpr char kEndedReader[] =
    "is damaged in a way that ends its reader (qpdf in.pdf out.pdf may mend it)";
// The problem if the reader ended as if it were done, but without its final message.
inline constexpr char kSilentReader[] =
    "could not be read: its reader ended before its last word (run this again)";

using ChildWork = std::function<void(CHILD_LINK* link)>;
using ChildReceiver = std::function<bool(std::span<BYTE const> bytes)>;

// Runs `work` in a child whose standard error is dropped. True if the child came to its end and
// everything that was sent has been taken; the receiver knows from a final message whether all was
// sent. Otherwise false, with the reason in `problem`.
bool RunChild(ChildWork const& work, ChildReceiver const& receiver, std::string& problem);

// Runs `work` of 0 to `count` - 1 on threads of their own, which may run children, and returns when
// all are done. A child that is forked while another thread holds a lock waits for that lock for
// ever, so one is started only while all other threads of the group wait for bytes of theirs.
void RunSideBySide(size_t count, std::function<void(size_t index)> const& work);

// Runs `work` in a child and returns its result, or nullopt if there is none; the problem is the
// one that it reported, or how the child ended.
using ChildAnswer = std::function<std::optional<std::string>(std::string& problem)>;
std::optional<std::string> AskChild(ChildAnswer const& work, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_CHILD_H_

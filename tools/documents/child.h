// Child processes for work on documents: the library ends the process on some damaged ones.
#ifndef TOOLS_DOCUMENTS_CHILD_H_
#define TOOLS_DOCUMENTS_CHILD_H_

#include <functional>
#include <optional>
#include <string>

#include "tools/system/child_process.h"

namespace sorrelin::tool {

// The problem of a document, or a page, that ended its reader.
inline constexpr char kEndedReader[] =
    "is damaged in a way that ends its reader (qpdf in.pdf out.pdf may mend it)";
// The problem if the reader ended as if it were done, but without its final message.
inline constexpr char kSilentReader[] =
    "could not be read: its reader ended before its last word (run this again)";

// Has a child do `work`. True if the child came to its end and everything that was sent has been
// taken; the receiver knows from a final message whether all was sent. Otherwise false, with the
// reason in `problem`.
bool RunChild(ChildWork const& work, ChildReceiver const& receiver, std::string& problem);

// What a child is asked for: its answer, or nullopt with the reason in `problem`.
using ChildAnswer = std::function<std::optional<std::string>(std::string& problem)>;

// In the child: sends the answer.
void SendAnswer(ParentLink& link, ChildAnswer const& answer);

// Has a child do `work`, which sends an answer, and returns that, or nullopt if there is none; the
// problem is the one that the child reported, or how it ended.
std::optional<std::string> AskChild(ChildWork const& work, std::string& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_CHILD_H_

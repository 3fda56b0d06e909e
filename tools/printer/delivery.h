// The delivery of a finished document into a folder for each user.
#ifndef TOOLS_PRINTER_DELIVERY_H_
#define TOOLS_PRINTER_DELIVERY_H_

#include <optional>
#include <string>
#include <string_view>

namespace sorrelin::tool {

// Exit codes of backends, by which the scheduler decides what becomes of job and queue.
enum class BackendResult {
  kDone = 0,
  kFailed = 1,  // the queue's error policy decides
  kHold = 3,    // the job is kept until somebody releases it
  kStop = 4,    // the queue is stopped, and the job kept
  kCancel = 5   // the job is given up
};

// The folder of "sorrelin:/path" or "sorrelin:///path", with %XX decoded. nullopt for any other
// address, and for one with "..".
std::optional<std::string> FolderOfUri(std::string_view uri);

struct Delivery {
  std::string folder;  // the folders of all users are in it; it exists
  std::string user;
  std::string title;
  int input = 0;  // descriptor that the document is read from
};

// From now on SIGTERM ends a delivery, which then leaves nothing.
void EndOnRequest();

// Stores the document as FOLDER/USER/TITLE.pdf, or TITLE (2).pdf and so on where that exists: whole
// or not at all, readable by its owner only. Run as root, the folder and the document are the
// user's if there is an account of that name, and the process gives up root's rights for good. Says
// what fails.
BackendResult Deliver(Delivery const& delivery);

}  // namespace sorrelin::tool

#endif  // TOOLS_PRINTER_DELIVERY_H_

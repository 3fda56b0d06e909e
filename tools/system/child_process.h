// Child processes of the program, in the way that the system has.
#ifndef TOOLS_SYSTEM_CHILD_PROCESS_H_
#define TOOLS_SYSTEM_CHILD_PROCESS_H_

#include <sorrelin/platform/types.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace sorrelin::tool {

// The way from a child to the process that waits for it.
class ParentLink {
 public:
  virtual ~ParentLink() = default;
  // Passes bytes on. False if nobody takes them any more.
  virtual bool Send(std::span<BYTE const> bytes) = 0;
  bool SendText(std::string_view text) {
    return Send({reinterpret_cast<BYTE const*>(text.data()), text.size()});
  }
};

// Work for a child. A copy of this process calls `run`. Where processes cannot be copied, the
// program is started again, and gets the name of the work and the bytes that `pack` appends.
struct ChildWork {
  std::function<void(ParentLink& link)> run;
  std::string_view name = {};
  std::function<void(std::string& bytes)> pack = {};
};

// Takes bytes that a child has sent, in their order but in pieces of any size; false ends the
// child.
using ChildReceiver = std::function<bool(std::span<BYTE const> bytes)>;

// Has a child, whose standard error is dropped, do `work`. True if it came to its end and
// everything that it sent was taken. Otherwise false with the system's error: 1067 if the child was
// ended before, 8 if it ended because memory was short, 1223 if the receiver gave false. A child
// ends with its parent, and tidies up before.
bool RunInChild(ChildWork const& work, ChildReceiver const& receiver);

// Runs `work` of 0 to `count` - 1 on threads of their own, which may run children, and returns when
// all are done.
void RunSideBySide(size_t count, std::function<void(size_t index)> const& work);

// Does the work of this name with what its pack() has appended.
using NamedWork = void (*)(ParentLink& link, std::string_view name, std::string_view packed);

// The exit code of a process that was started as a child, when its work is done; nullopt for any
// other. `tidy_up` is called if the parent ends before. Call TidyUpOnCrash first, lest a dialog
// about a crash wait for a user who does not know of the child.
std::optional<int> RunAsChild(std::span<char* const> arguments, NamedWork work, void (*tidy_up)());

}  // namespace sorrelin::tool

#endif  // TOOLS_SYSTEM_CHILD_PROCESS_H_

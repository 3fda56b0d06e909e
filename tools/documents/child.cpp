// An answer goes over the pipe as a mark, "+" for a result and "-" for a problem, the text, and a
// full stop, without which it counts as no answer.
#include "tools/documents/child.h"

#include <sorrelin/platform/console.h>
#include <sorrelin/platform/error.h>

#include <exception>
#include <new>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

constexpr char kFullStop = '.';

struct Run {
  ChildWork const& work;
  ChildReceiver const& receiver;
};

void Work(CHILD_LINK* link, void* context) {
  MuteStandardError();
  static_cast<Run*>(context)->work(link);
}

BOOL Receive(void const* data, DWORD size, void* context) {
  std::span<BYTE const> const bytes(static_cast<BYTE const*>(data), size);
  return static_cast<Run*>(context)->receiver(bytes) ? TRUE : FALSE;
}

}  // namespace

bool RunChild(ChildWork const& work, ChildReceiver const& receiver, std::string& problem) {
  Run run = {work, receiver};
  if (RunInChildProcess(Work, Receive, &run) != FALSE) return true;
  problem = GetLastError() == ERROR_PROCESS_ABORTED ? kEndedReader : LastSystemError();
  return false;
}

std::optional<std::string> AskChild(ChildAnswer const& work, std::string& problem) {
  auto const answer = [&](CHILD_LINK* link) {
    std::string reason = kMemoryProblem;
    std::optional<std::string> result;
    try {
      result = work(reason);
    } catch (std::bad_alloc const&) {
    }
    std::string const text = (result ? "+" + *result : "-" + reason) + kFullStop;
    SendToParent(link, text.data(), static_cast<DWORD>(text.size()));
  };
  std::string received;
  auto const append = [&](std::span<BYTE const> bytes) {
    received.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
    return true;
  };
  if (!RunChild(answer, append, problem)) return std::nullopt;
  if (received.size() < 2 || received.back() != kFullStop) {
    problem = kSilentReader;
    return std::nullopt;
  }
  std::string const text = received.substr(1, received.size() - 2);
  if (received.starts_with('+')) return text;
  problem = text;
  return std::nullopt;
}

}  // namespace sorrelin::tool

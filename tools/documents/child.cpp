// What children send: an answer is a mark, "+" for a result and "-" for a problem, the text, and a
// full stop, without which it counts as no answer.
#include "tools/documents/child.h"

#include <sorrelin/platform/error.h>

#include <new>
#include <string_view>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

constexpr char kFullStop[] = ".";

// Why a child did not come to its end, by the system's error.
std::string ProblemOf(DWORD error) {
  if (error == ERROR_PROCESS_ABORTED) return kEndedReader;
  if (error == ERROR_NOT_ENOUGH_MEMORY) return kMemoryProblem;
  return LastSystemError();
}

}  // namespace

bool RunChild(ChildWork const& work, ChildReceiver const& receiver, std::string& problem) {
  if (RunInChild(work, receiver)) return true;
  problem = ProblemOf(GetLastError());
  return false;
}

void SendAnswer(ParentLink& link, ChildAnswer const& answer) {
  std::optional<std::string> result;
  std::string problem;
  std::string_view text = kMemoryProblem;
  try {
    problem = kMemoryProblem;
    result = answer(problem);
    text = result ? *result : problem;
  } catch (std::bad_alloc const&) {
  }
  link.SendText(result ? "+" : "-");
  link.SendText(text);
  link.SendText(kFullStop);
}

std::optional<std::string> AskChild(ChildWork const& work, std::string& problem) {
  std::string received;
  auto const append = [&](std::span<BYTE const> bytes) {
    received.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
    return true;
  };
  if (!RunChild(work, append, problem)) return std::nullopt;
  if (received.size() < 2 || !received.ends_with(kFullStop)) {
    problem = kSilentReader;
    return std::nullopt;
  }
  std::string const text = received.substr(1, received.size() - 2);
  if (received.starts_with('+')) return text;
  problem = text;
  return std::nullopt;
}

}  // namespace sorrelin::tool

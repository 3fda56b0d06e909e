// The handler of the console's events.
#include "tools/cli/interrupt.h"

#include <sorrelin/platform/console.h>

#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/cli/progress.h"
#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

// Files first: a terminal that is held may keep the bar. Threads that go on writing would blame the
// disk for files that have been closed.
BOOL WINAPI OnInterrupt(DWORD) {
  SilenceMessages();
  RemoveOutputForGood();
  RemoveBarForGood();
  EndInterrupted();
  return FALSE;
}

}  // namespace

void TidyUpOnInterrupt() { SetConsoleCtrlHandler(OnInterrupt, TRUE); }

}  // namespace sorrelin::tool

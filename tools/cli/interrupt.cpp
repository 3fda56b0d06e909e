// The handler of the console's events.
#include "tools/cli/interrupt.h"

#include <sorrelin/platform/console.h>

#include "tools/cli/output_file.h"
#include "tools/cli/progress.h"
#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

// Files first: a terminal that is held may keep the bar.
BOOL WINAPI OnInterrupt(DWORD) {
  RemoveOutputForGood();
  RemoveBarForGood();
  EndInterrupted();
  return FALSE;
}

}  // namespace

void TidyUpOnInterrupt() { SetConsoleCtrlHandler(OnInterrupt, TRUE); }

}  // namespace sorrelin::tool

// What happens when the user or the system ends the program early.
#ifndef TOOLS_CLI_INTERRUPT_H_
#define TOOLS_CLI_INTERRUPT_H_

namespace sorrelin::tool {

// Has uncommitted output removed, and the terminal left as it was, when the process is asked to
// end. Call it once, before any thread is started.
void TidyUpOnInterrupt();

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_INTERRUPT_H_

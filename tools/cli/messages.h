// What the program says on standard error.
#ifndef TOOLS_CLI_MESSAGES_H_
#define TOOLS_CLI_MESSAGES_H_

#include <string>

namespace sorrelin::tool {

// What to do about problems, for the end of their messages.
inline constexpr char kRoomRemedy[] = " (see that there is room, and that it may be written to)";
inline constexpr char kMendRemedy[] = " (qpdf in.pdf out.pdf may mend it)";
inline constexpr char kRewriteHint[] =
    " (rewrite it first: qpdf --object-streams=disable in.pdf out.pdf)";
inline constexpr char kDrawRemedy[] = " (pdftoppm -png draws such pages)";

inline constexpr char kDeviceProblem[] = "is the name of a device (choose another name)";
inline constexpr char kMemoryProblem[] = "there is not enough memory (close other programs)";

// Prints "sorrelin: NAME: problem" as one line; control characters in it become question marks, so
// that a file's name cannot steer the terminal.
void PrintProblem(std::string const& name, std::string const& problem);

// Prints "sorrelin: TEXT" in the same way.
void PrintNote(std::string const& text);

// Neither prints anything from then on. For a process that is about to end.
void SilenceMessages();

// Sends on what was printed to standard output.
void FlushOutput();

// Whether all that was printed has gone out; if not, why, unless the reader has gone: that one has
// had enough.
bool IsOutputWhole();

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_MESSAGES_H_

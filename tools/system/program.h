// What the program asks of the system that each system has in its own way.
#ifndef TOOLS_SYSTEM_PROGRAM_H_
#define TOOLS_SYSTEM_PROGRAM_H_

#include <filesystem>
#include <string>

namespace sorrelin::tool {

// Has standard streams carry bytes unchanged, and the console show UTF-8. Call it before
// anything is read or written.
void PrepareStreams();

// Has libraries not be loaded from the current directory, where pictures of others may be.
void TrustOwnLibraries();

// Erases what the terminal on standard error shows from the line of its cursor on. To be printed:
// the rest of that, where terminals take it as text.
std::string EraseFromLine();

// Has `tidy_up` called when the process crashes, on systems that would leave its open files or show
// the user a dialog. The process then ends with `exit_code`.
void TidyUpOnCrash(void (*tidy_up)(), int exit_code);

// Ends the process with the status of an interrupted one, where the system would not do so after
// the handler of the interrupt.
void EndInterrupted();

// The error of a standard stream that has just failed to write, as errno has it; EPIPE if nobody
// reads from it any more.
int WriteErrorOfStream();

// Gives the file `from` the name of the file `to`, with who owns that and who may do what with it.
// At every moment the name is that of one of them, whole. False with the system error.
bool ReplaceKeepingAccess(std::filesystem::path const& to, std::filesystem::path const& from);

// Whether a file that this process holds, and lets others remove, can be replaced.
bool CanReplaceHeldFiles();

// Whether a file that could not be replaced is open, on systems where that is a reason.
bool IsHeld(std::filesystem::path const& path);

// Whether a file is marked so that nobody may change or replace it, on systems where such a mark is
// the file's own and not a permission.
bool IsWriteProtected(std::filesystem::path const& path);

// Removes a directory with the files in it. False if something is left.
bool RemoveFolder(std::filesystem::path const& directory);

// Closes this process's files in a directory, where open files cannot be removed. Whoever has them
// open does not know: for a process that is about to end.
void CloseFilesIn(std::filesystem::path const& directory);

}  // namespace sorrelin::tool

#endif  // TOOLS_SYSTEM_PROGRAM_H_

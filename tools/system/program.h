// What the program asks of the system that each system has in its own way.
#ifndef TOOLS_SYSTEM_PROGRAM_H_
#define TOOLS_SYSTEM_PROGRAM_H_

#include <filesystem>

namespace sorrelin::tool {

// Has standard streams carry bytes unchanged, and the console show UTF-8 and know escape sequences.
// Call it before anything is read or written.
void PrepareStreams();

// Has `tidy_up` called when the process crashes, where a damaged file can do that: on systems that
// give the readers of files no process of their own. The process then ends with `exit_code`.
void TidyUpOnCrash(void (*tidy_up)(), int exit_code);

// Whether work that RunInChildProcess runs has its own process and memory.
bool HasChildProcesses();

// Whether a file cannot have this name since a device has it, as CON and NUL.pdf on Windows.
bool IsDeviceName(std::filesystem::path const& path);

// Whether another program has a file open in a way that keeps it from being replaced.
bool IsHeld(std::filesystem::path const& path);

// Removes a directory with the files in it. False if something is left.
bool RemoveFolder(std::filesystem::path const& directory);

// Closes this process's files in a directory, where open files cannot be removed. Whoever has them
// open does not know: for a process that is about to end.
void CloseFilesIn(std::filesystem::path const& directory);

}  // namespace sorrelin::tool

#endif  // TOOLS_SYSTEM_PROGRAM_H_

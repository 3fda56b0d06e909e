// The verbs of the command line, one source file each.
#ifndef TOOLS_VERBS_VERBS_H_
#define TOOLS_VERBS_VERBS_H_

#include <CLI/CLI.hpp>

namespace sorrelin::tool {

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;  // some input failed, or nothing could be written
inline constexpr int kExitUsage = 2;

// Adds a verb to the program. If the command line names it, the verb runs while it is parsed and
// leaves its exit code in `exit_code`. What is wrong with an argument leaves as CLI::ParseError.
void AddAppend(CLI::App& program, int& exit_code);
void AddCount(CLI::App& program, int& exit_code);
void AddExtract(CLI::App& program, int& exit_code);
void AddInfo(CLI::App& program, int& exit_code);
void AddMake(CLI::App& program, int& exit_code);
void AddWords(CLI::App& program, int& exit_code);

}  // namespace sorrelin::tool

#endif  // TOOLS_VERBS_VERBS_H_

// What the program says on standard error.
#ifndef TOOLS_MESSAGES_H_
#define TOOLS_MESSAGES_H_

#include <string>

namespace sorrelin::tool {

// Prints "sorrelin: NAME: problem" as one line; control characters in it become question marks, so
// that a file's name cannot steer the terminal.
void PrintProblem(std::string const& name, std::string const& problem);

}  // namespace sorrelin::tool

#endif  // TOOLS_MESSAGES_H_

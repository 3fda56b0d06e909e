// The option for the passwords of encrypted documents.
#ifndef TOOLS_DOCUMENTS_PASSWORD_FILE_H_
#define TOOLS_DOCUMENTS_PASSWORD_FILE_H_

#include <string>

#include "tools/cli/command_line.h"

namespace sorrelin::tool {

// "--password-file FILE": `password` becomes the first line of that file. The parser throws
// UsageError if the file cannot be read.
void AddPasswordFile(Verb& verb, std::string& password);

}  // namespace sorrelin::tool

#endif  // TOOLS_DOCUMENTS_PASSWORD_FILE_H_

// Names of open files on Windows.
#ifndef TOOLS_SYSTEM_FILE_NAME_WINDOWS_H_
#define TOOLS_SYSTEM_FILE_NAME_WINDOWS_H_

#include <windows.h>

#include <string>

namespace sorrelin::tool {

// The full name of an open file, with a prefix that marks it as one. Empty if the handle is not
// that of a file.
std::wstring NameOfFile(HANDLE file);

}  // namespace sorrelin::tool

#endif  // TOOLS_SYSTEM_FILE_NAME_WINDOWS_H_

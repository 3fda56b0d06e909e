// The option for passwords. They come from files, since other users see command lines.
#include "tools/documents/password_file.h"

#include <fstream>

namespace sorrelin::tool {

void AddPasswordFile(Verb& verb, std::string& password) {
  verb.Option("--password-file", "FILE", "Password of the document, in the first line",
              [&password](std::string const& name) {
                std::ifstream file(name, std::ios::binary);
                if (!file) throw UsageError("--password-file", "cannot be read: " + name);
                std::getline(file, password);
                if (password.ends_with('\r')) password.pop_back();
              });
}

}  // namespace sorrelin::tool

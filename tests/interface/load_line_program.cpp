// Loads and unloads the shared library and compares what it prints with what it should.
#include <sorrelin/platform/module.h>
#include <sorrelin/platform/wide_string.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

// Arguments: the library, and ON if it prints its line.
int main(int count, char** arguments) {
  if (count != 3) return 2;
  bool const prints = std::strcmp(arguments[2], "ON") == 0;
  std::FILE* const captured = std::tmpfile();
  int const old_stdout = ::dup(1);
  ::dup2(::fileno(captured), 1);
  HMODULE const library = LoadLibraryW(sorrelin::ToWide(arguments[1]).c_str());
  if (library == nullptr) return 3;
  FreeLibrary(library);
  std::fflush(stdout);
  ::dup2(old_stdout, 1);
  std::rewind(captured);
  char text[256] = {};
  std::string const printed(text, std::fread(text, 1, sizeof text, captured));
  std::string const line = "Sorrelin DLLMain end";
  std::string const expected = prints ? line + line : "";
  if (printed == expected) return 0;
  std::fprintf(stderr, "printed \"%s\"\n", printed.c_str());
  return 1;
}

// The system's texts of its error numbers.
#ifndef TESTS_SUPPORT_SYSTEM_TEXT_H_
#define TESTS_SUPPORT_SYSTEM_TEXT_H_

#include <sorrelin/platform/error.h>

#include <string>

namespace test {

// The text as the system has it, its line end too where it has one.
inline std::string SystemText(DWORD error) {
  DWORD const flags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  char* text = nullptr;
  FormatMessageA(flags, nullptr, error, 0x400, reinterpret_cast<char*>(&text), 0, nullptr);
  std::string const copy = text != nullptr ? text : "";
  LocalFree(text);
  return copy;
}

}  // namespace test

#endif  // TESTS_SUPPORT_SYSTEM_TEXT_H_

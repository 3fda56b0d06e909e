// What tests use of other systems by its name there, for Windows; included before every test.
#ifndef TESTS_SUPPORT_WINDOWS_NAMES_H_
#define TESTS_SUPPORT_WINDOWS_NAMES_H_

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>

// Makes a directory of its own by the pattern, whose last six characters are replaced.
inline char* mkdtemp(char* pattern) {
  constexpr size_t kPlaces = 6;
  std::random_device random;
  char* const end = pattern + std::strlen(pattern);
  do {
    for (char* place = end - kPlaces; place != end; ++place) {
      *place = static_cast<char>('a' + random() % 26);
    }
  } while (!std::filesystem::create_directory(pattern));
  return pattern;
}

inline int setenv(char const* name, char const* value, int) {
  return _putenv((std::string(name) + "=" + value).c_str());
}

inline int unsetenv(char const* name) { return setenv(name, "", 1); }

#endif  // TESTS_SUPPORT_WINDOWS_NAMES_H_

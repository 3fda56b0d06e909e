// The program on Windows: streams, crashes and the names of devices.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

// Handles are multiples of this number, from the first on.
constexpr uintptr_t kHandleStep = 4;
constexpr uintptr_t kEndOfHandles = uintptr_t{1} << 12;

// What a handler may use after the stack has overflowed.
constexpr ULONG kStackForHandler = 1 << 16;

void (*crash_handler)() = nullptr;
int crash_exit_code = 0;

[[noreturn]] void EndAfterCrash() {
  crash_handler();
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(crash_exit_code));
  std::_Exit(crash_exit_code);
}

LONG WINAPI OnException(EXCEPTION_POINTERS*) { EndAfterCrash(); }

void OnAbort(int) { EndAfterCrash(); }

// Empty if the handle is not that of a file.
std::wstring NameOfFile(HANDLE file) {
  if (GetFileType(file) != FILE_TYPE_DISK) return {};
  std::wstring name(GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
  DWORD const size = static_cast<DWORD>(name.size());
  name.resize(GetFinalPathNameByHandleW(file, name.data(), size, FILE_NAME_NORMALIZED));
  return name;
}

void ShowEscapeSequences(DWORD stream) {
  HANDLE const console = GetStdHandle(stream);
  DWORD mode = 0;
  if (GetConsoleMode(console, &mode) == FALSE) return;
  SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

}  // namespace

void PrepareStreams() {
  _fmode = _O_BINARY;
  for (std::FILE* const stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
  ShowEscapeSequences(STD_OUTPUT_HANDLE);
  ShowEscapeSequences(STD_ERROR_HANDLE);
}

void TidyUpOnCrash(void (*tidy_up)(), int exit_code) {
  crash_handler = tidy_up;
  crash_exit_code = exit_code;
  ULONG stack = kStackForHandler;
  SetThreadStackGuarantee(&stack);
  // A dialog would wait for a user who may not be there.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(OnException);
  std::signal(SIGABRT, OnAbort);
}

bool HasChildProcesses() { return false; }

bool IsHeld(std::filesystem::path const& path) {
  DWORD const share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  HANDLE const file = CreateFileW(path.c_str(), DELETE, share, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
  CloseHandle(file);
  return false;
}

// The standard library's walk does not reach paths of more than 260 characters.
bool RemoveFolder(std::filesystem::path const& directory) {
  WIN32_FIND_DATAW entry{};
  HANDLE const search = FindFirstFileW((directory / L"*").c_str(), &entry);
  if (search != INVALID_HANDLE_VALUE) {
    do {
      bool const is_file = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
      if (is_file) DeleteFileW((directory / entry.cFileName).c_str());
    } while (FindNextFileW(search, &entry) != FALSE);
    FindClose(search);
  }
  return RemoveDirectoryW(directory.c_str()) != FALSE || GetLastError() == ERROR_PATH_NOT_FOUND ||
         GetLastError() == ERROR_FILE_NOT_FOUND;
}

void CloseFilesIn(std::filesystem::path const& directory) {
  std::wstring const part = L"\\" + directory.filename().wstring() + L"\\";
  for (uintptr_t value = kHandleStep; value < kEndOfHandles; value += kHandleStep) {
    HANDLE const file = reinterpret_cast<HANDLE>(value);
    if (NameOfFile(file).find(part) != std::wstring::npos) CloseHandle(file);
  }
}

// The system itself knows which names it gives to devices.
bool IsDeviceName(std::filesystem::path const& path) {
  DWORD const size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  GetFullPathNameW(path.c_str(), size, full.data(), nullptr);
  return full.starts_with(L"\\\\.\\");
}

}  // namespace sorrelin::tool

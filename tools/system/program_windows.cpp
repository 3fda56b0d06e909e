// The program on Windows: streams, crashes, and files that others hold or protect.
#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/system/file_name_windows.h"
#include "tools/system/names.h"
#include "tools/system/program.h"

namespace sorrelin::tool {
namespace {

// Handles are multiples of this number, from the first on.
constexpr uintptr_t kHandleStep = 4;
constexpr uintptr_t kEndOfHandles = uintptr_t{1} << 12;

constexpr DWORD kPathUnits = 1 << 15;  // the longest path

// What a handler may use after the stack has overflowed.
constexpr ULONG kStackForHandler = 1 << 16;

constexpr UINT kControlCExit = 0xC000013A;  // STATUS_CONTROL_C_EXIT

void (*crash_handler)() = nullptr;
int crash_exit_code = 0;

[[noreturn]] void EndAfterCrash() {
  crash_handler();
  std::fflush(stderr);
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(crash_exit_code));
  std::_Exit(crash_exit_code);
}

LONG WINAPI OnException(EXCEPTION_POINTERS*) { EndAfterCrash(); }

void OnAbort(int) { EndAfterCrash(); }

// Rights that come from the folder stay those of the folder.
bool CopyAccess(std::wstring const& from, std::wstring to) {
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  DWORD error = GetNamedSecurityInfoW(from.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                      nullptr, nullptr, &list, nullptr, &descriptor);
  if (error != ERROR_SUCCESS) return SetLastError(error), false;
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  GetSecurityDescriptorControl(descriptor, &control, &revision);
  SECURITY_INFORMATION const kind = (control & SE_DACL_PROTECTED) != 0
                                        ? PROTECTED_DACL_SECURITY_INFORMATION
                                        : UNPROTECTED_DACL_SECURITY_INFORMATION;
  error = SetNamedSecurityInfoW(to.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | kind,
                                nullptr, nullptr, list, nullptr);
  LocalFree(descriptor);
  SetLastError(error);
  return error == ERROR_SUCCESS;
}

// A copy of a protected file is protected too.
void RemoveFile(std::filesystem::path const& path) {
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  DeleteFileW(path.c_str());
}

// The console stays the user's when the program has ended.
UINT users_code_page = 0;

void RestoreCodePage() {
  if (users_code_page != 0) SetConsoleOutputCP(users_code_page);
}

}  // namespace

void PrepareStreams() {
  _fmode = _O_BINARY;
  for (std::FILE* const stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  // A console that is sent the bytes of a character one by one does not show it.
  for (std::FILE* const stream : {stdout, stderr}) std::setvbuf(stream, nullptr, _IOFBF, BUFSIZ);
  users_code_page = GetConsoleOutputCP();
  SetConsoleOutputCP(CP_UTF8);
  std::atexit(RestoreCodePage);
}

// Not every console knows sequences for this.
std::string EraseFromLine() {
  HANDLE const console = GetStdHandle(STD_ERROR_HANDLE);
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(console, &info) == FALSE) return {};
  COORD const start = {0, info.dwCursorPosition.Y};
  int const lines = std::max(1, info.srWindow.Bottom - start.Y + 1);
  DWORD filled = 0;
  FillConsoleOutputCharacterW(console, L' ', static_cast<DWORD>(lines * info.dwSize.X), start,
                              &filled);
  SetConsoleCursorPosition(console, start);
  return {};
}

// A folder that is set takes the place of the current directory.
void TrustOwnLibraries() {
  std::wstring path(kPathUnits, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kPathUnits));
  SetDllDirectoryW(std::filesystem::path(path).parent_path().c_str());
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

// Other threads must not go on to say that their files are closed.
void EndInterrupted() {
  RestoreCodePage();
  TerminateProcess(GetCurrentProcess(), kControlCExit);
}

// The run-time library knows some of these errors as invalid arguments only.
int WriteErrorOfStream() {
  unsigned long const error = _doserrno;
  bool const is_gone =
      error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED;
  return is_gone ? EPIPE : errno;
}

// The system's ReplaceFileW has moments without a file of that name.
bool ReplaceKeepingAccess(std::filesystem::path const& to, std::filesystem::path const& from) {
  std::wstring const target = FullName(to).native(), file = FullName(from).native();
  return CopyAccess(target, file) &&
         MoveFileExW(file.c_str(), target.c_str(),
                     MOVEFILE_WRITE_THROUGH | MOVEFILE_REPLACE_EXISTING) != FALSE;
}

bool CanReplaceHeldFiles() { return false; }

bool IsHeld(std::filesystem::path const& path) {
  HANDLE const file =
      CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
  CloseHandle(file);
  return false;
}

bool IsWriteProtected(std::filesystem::path const& path) {
  DWORD const attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
         (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// The standard library's walk does not reach paths of more than 260 characters.
bool RemoveFolder(std::filesystem::path const& directory) {
  WIN32_FIND_DATAW entry{};
  HANDLE const search = FindFirstFileW((directory / L"*").c_str(), &entry);
  if (search != INVALID_HANDLE_VALUE) {
    do {
      bool const is_file = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
      if (is_file) RemoveFile(directory / entry.cFileName);
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

}  // namespace sorrelin::tool

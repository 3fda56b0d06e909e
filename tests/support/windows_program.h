// Runs sorrelin.exe from a process of Windows.
#ifndef TESTS_SUPPORT_WINDOWS_PROGRAM_H_
#define TESTS_SUPPORT_WINDOWS_PROGRAM_H_

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace test {

constexpr DWORD kExitInterrupted = 0xC000013A;  // STATUS_CONTROL_C_EXIT

// As the run-time library of the program takes them apart.
inline std::wstring CommandLine(std::vector<std::wstring> const& arguments) {
  std::wstring line;
  for (std::wstring const& argument : arguments) {
    line += (line.empty() ? L"\"" : L" \"") + argument + L"\"";
  }
  return line;
}

inline BOOL WINAPI IgnoreInterrupt(DWORD) { return TRUE; }

// A console, by which interrupts reach the programs that are started from then on. This process
// ignores them.
inline void OpenConsoleForInterrupts() {
  FreeConsole();
  ASSERT_TRUE(AllocConsole()) << GetLastError();
  SetConsoleCtrlHandler(IgnoreInterrupt, TRUE);
}

// sorrelin.exe, which is beside the test.
inline std::wstring ProgramUnderTest() {
  std::wstring name(MAX_PATH, L'\0');
  name.resize(GetModuleFileNameW(nullptr, name.data(), MAX_PATH));
  return (std::filesystem::path(name).parent_path() / L"sorrelin.exe").native();
}

// A program that has been started. Its output goes to files, and its input is a pipe that stays
// open.
class WindowsProgram {
 public:
  explicit WindowsProgram(std::vector<std::wstring> arguments) {
    arguments.insert(arguments.begin(), ProgramUnderTest());
    std::wstring line = CommandLine(arguments);
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE input = nullptr;
    CreatePipe(&input, &to_program_, &inherited, 0);
    SetHandleInformation(to_program_, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input;
    start.hStdOutput = OutputTo("out", inherited);
    start.hStdError = OutputTo("err", inherited);
    BOOL const started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        nullptr, &start, &process_);
    EXPECT_TRUE(started) << GetLastError();
    for (HANDLE const handle : {input, start.hStdOutput, start.hStdError}) CloseHandle(handle);
  }
  ~WindowsProgram() {
    TerminateProcess(process_.hProcess, 1);
    CloseHandle(to_program_);
    CloseHandle(process_.hProcess);
    CloseHandle(process_.hThread);
  }
  WindowsProgram(WindowsProgram const&) = delete;
  WindowsProgram& operator=(WindowsProgram const&) = delete;

  bool HasEnded() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_OBJECT_0; }

  // The exit code, once the program has ended.
  DWORD Wait() {
    constexpr DWORD kMostMilliseconds = 60000;
    EXPECT_EQ(WaitForSingleObject(process_.hProcess, kMostMilliseconds), WAIT_OBJECT_0);
    DWORD code = 0;
    GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }

  std::string Output() const { return Content("out"); }
  std::string Messages() const { return Content("err"); }

 private:
  HANDLE OutputTo(char const* name, SECURITY_ATTRIBUTES& inherited) {
    return CreateFileW((directory_ / name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  }

  std::string Content(char const* name) const {
    std::vector<BYTE> const bytes = ReadAll(directory_ / name);
    return {bytes.begin(), bytes.end()};
  }

  TempDir directory_;
  HANDLE to_program_ = nullptr;
  PROCESS_INFORMATION process_{};
};

}  // namespace test

#endif  // TESTS_SUPPORT_WINDOWS_PROGRAM_H_

// Runs a program as a user's shell would, and returns its output and exit code.
#ifndef TESTS_SUPPORT_RUN_PROGRAM_H_
#define TESTS_SUPPORT_RUN_PROGRAM_H_

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace test {

struct ProgramResult {
  int exit_code = -1;  // -1: it was ended by a signal
  int signal = 0;
  std::string out;
  std::string err;
};

// The program under test: another build of it where the environment names one, such as that for
// another system.
inline std::string ProgramUnderTest(std::string const& program) {
  char const* const other = std::getenv("SORRELIN_TEST_PROGRAM");
  return other != nullptr ? other : program;
}

// What the system says where the program under test runs: this one or, under another program of
// that variable, Wine.
inline std::string SystemText(std::string const& here, std::string const& wine) {
  return std::getenv("SORRELIN_TEST_PROGRAM") != nullptr ? wine : here;
}

inline void ReplaceProgram(std::vector<std::string>& arguments) {
  for (std::string& argument : arguments) {
    std::filesystem::path const path = argument;
    bool const is_program = path.is_absolute() && path.filename() == "sorrelin";
    if (is_program) argument = ProgramUnderTest(argument);
  }
}

// A program that has been started; its output goes to files, so it never waits for a reader.
class RunningProgram {
 public:
  // `input` is a descriptor for standard input, `terminal` one for standard error if not -1; both
  // stay the caller's.
  RunningProgram(std::vector<std::string> arguments, std::vector<std::string> const& environment,
                 int input, int terminal = -1) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    AddFile(actions, STDOUT_FILENO, "out");
    if (terminal == -1) {
      AddFile(actions, STDERR_FILENO, "err");
    } else {
      posix_spawn_file_actions_adddup2(&actions, terminal, STDERR_FILENO);
    }
    ReplaceProgram(arguments);
    std::vector<char*> argv, envp;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    for (std::string const& variable : environment) {
      envp.push_back(const_cast<char*>(variable.c_str()));
    }
    for (char** variable = environ; *variable != nullptr; ++variable) envp.push_back(*variable);
    envp.push_back(nullptr);
    int const error = posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(error, 0) << "cannot start " << arguments[0];
    if (error != 0) pid_ = -1;
  }
  ~RunningProgram() {
    if (pid_ == -1) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  RunningProgram(RunningProgram const&) = delete;
  RunningProgram& operator=(RunningProgram const&) = delete;

  void Signal(int number) { kill(pid_, number); }
  pid_t pid() const { return pid_; }

  ProgramResult Wait() {
    ProgramResult result;
    int status = 0;
    if (pid_ != -1) waitpid(pid_, &status, 0);
    pid_ = -1;
    if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    result.out = Content("out");
    result.err = Content("err");
    return result;
  }

 private:
  void AddFile(posix_spawn_file_actions_t& actions, int descriptor, char const* name) {
    posix_spawn_file_actions_addopen(&actions, descriptor, (directory_ / name).c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
  }

  std::string Content(char const* name) const {
    std::ifstream file(directory_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  TempDir directory_;
  pid_t pid_ = -1;
};

// Runs a program to its end with `input` as its standard input. `environment` has entries such as
// "NAME=value" that come before the test's own.
inline ProgramResult RunProgram(std::vector<std::string> arguments,
                                std::vector<BYTE> const& input = {},
                                std::vector<std::string> const& environment = {}) {
  TempDir directory;
  WriteAll(directory / "in", input);
  int const descriptor = open((directory / "in").c_str(), O_RDONLY | O_CLOEXEC);
  RunningProgram program(std::move(arguments), environment, descriptor);
  ProgramResult result = program.Wait();
  close(descriptor);
  return result;
}

}  // namespace test

#endif  // TESTS_SUPPORT_RUN_PROGRAM_H_

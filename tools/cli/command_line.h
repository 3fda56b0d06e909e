// The command line: a program of verbs, what each verb takes, and how the program ends.
#ifndef TOOLS_CLI_COMMAND_LINE_H_
#define TOOLS_CLI_COMMAND_LINE_H_

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace sorrelin::tool {

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;  // some input failed, or nothing could be written
inline constexpr int kExitUsage = 2;

// What is wrong with an argument of the command line.
class UsageError : public std::runtime_error {
 public:
  UsageError(std::string const& argument, std::string const& problem)
      : std::runtime_error(argument + ": " + problem) {}
  explicit UsageError(std::string const& text) : std::runtime_error(text) {}
};

// The names that arguments stand for, in their order: patterns are expanded where shells leave that
// to programs.
std::vector<std::string> ExpandedNames(std::vector<std::string> const& arguments);

// What a verb takes, in the order of its help. The targets are filled before the verb runs and must
// live as long as the program. Parsers and the run may leave with UsageError.
class Verb {
 public:
  using Parser = std::function<void(std::string const& text)>;

  Verb(CLI::App& parser, int& exit_code) : parser_(parser), exit_code_(exit_code) {}

  // An argument without a dash, which must be there; a list takes one or more, as ExpandedNames
  // gives them.
  void Argument(std::string const& name, std::string& target, std::string const& help);
  void Argument(std::string const& name, std::vector<std::string>& target, std::string const& help);

  // The same for one that may be left out.
  void OptionalArgument(std::string const& name, std::string& target, std::string const& help);

  // "--name TYPE", if it is there.
  void Option(std::string const& name, std::string const& type, std::string const& help,
              Parser parser);
  // The same for one that may be there several times.
  void RepeatedOption(std::string const& name, std::string const& type, std::string const& help,
                      Parser parser);
  // "--name N", a number from `least` to `most`.
  void Number(std::string const& name, int& target, int least, int most, std::string const& help);
  // "--name".
  void Flag(std::string const& name, bool& target, std::string const& help);

  // An option that means nothing without another one.
  void Needs(std::string const& name, std::string const& other);

  // What the help says at its end.
  void Footer(std::string const& text);

  // What the verb does; returns the exit code.
  void Runs(std::function<int()> run);

 private:
  CLI::App& parser_;
  int& exit_code_;
};

class Program {
 public:
  Program(std::string const& name, std::string const& version, std::string const& help);
  ~Program();
  Program(Program const&) = delete;
  Program& operator=(Program const&) = delete;

  Verb AddVerb(std::string const& name, std::string const& help);

  // What the help says at its end.
  void Footer(std::string const& text);

  // Runs the verb that the command line names and returns its exit code; prints what is wrong with
  // the command line. "help VERB" is the same as "VERB --help".
  int Run(int argc, char** argv);

  // Takes a verb, its options, and names, which may begin as options do; runs what the verb runs,
  // if that was set. Throws UsageError.
  void Parse(std::string const& verb, std::vector<std::string> const& options,
             std::vector<std::string> const& names);

 private:
  std::string Hint(int argc, char** argv) const;

  std::string name_;
  std::unique_ptr<CLI::App> parser_;
  int exit_code_ = kExitSuccess;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_COMMAND_LINE_H_

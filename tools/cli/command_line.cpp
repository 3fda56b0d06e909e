// The command line, parsed by CLI11; only this file includes its header, which compiles slowly.
#include "tools/cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "tools/cli/text.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

// Shows arguments in the order in which they are usually written: options come last.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_usage(CLI::App const* app, std::string name) const override {
    std::string usage = "Usage: " + name;
    if (app->get_parent() == nullptr) usage += " VERB DOCUMENT [PICTURE]...";
    for (CLI::Option const* const option : app->get_options()) {
      if (option->get_positional()) usage += " " + make_option_usage(option);
    }
    return usage + " [OPTIONS]\n";
  }
};

std::string VerbsOf(CLI::App const& parser) {
  std::string names;
  for (CLI::App const* const verb : parser.get_subcommands([](CLI::App const*) { return true; })) {
    names += (names.empty() ? "" : ", ") + verb->get_name();
  }
  return names;
}

// A word in the place of the verb that is none is left over.
void RequireVerb(CLI::App const& parser) {
  auto const left_over = parser.remaining();
  if (!left_over.empty() && !left_over.front().starts_with('-')) {
    throw UsageError(left_over.front(), "is no verb; there are " + VerbsOf(parser));
  }
  if (!left_over.empty()) throw CLI::ExtrasError(parser.get_name(), {left_over.front()});
  if (parser.get_subcommands().empty()) {
    throw UsageError("A verb is required", "there are " + VerbsOf(parser));
  }
}

// The arguments, in the order in which the parser takes them: from the last to the first.
std::vector<std::string> Reversed(CLI::App const& parser, int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (!arguments.empty() && arguments[0] == "help") {
    arguments.erase(arguments.begin());
    auto const is_verb = [&](CLI::App const* verb) { return verb->get_name() == arguments[0]; };
    if (arguments.empty() || !parser.get_subcommands(is_verb).empty()) {
      arguments.push_back("--help");
    }
  }
  std::reverse(arguments.begin(), arguments.end());
  return arguments;
}

// The parser would take what follows the options for the value that the last one lacks.
void CheckLastOption(CLI::App const& verb, std::vector<std::string> const& options) {
  if (options.empty()) return;
  auto const* const last = verb.get_option_no_throw(options.back());
  if (last == nullptr || last->get_items_expected_min() == 0) return;
  throw UsageError(options.back(), "takes a value");
}

}  // namespace

std::vector<std::string> ExpandedNames(std::vector<std::string> const& arguments) {
  std::vector<std::string> names;
  for (std::string const& argument : arguments) {
    std::ranges::move(NamesOf(argument), std::back_inserter(names));
  }
  return names;
}

void Verb::Argument(std::string const& name, std::string& target, std::string const& help) {
  parser_.add_option(name, target, help)->required()->type_name("");
}

void Verb::Argument(std::string const& name, std::vector<std::string>& target,
                    std::string const& help) {
  auto const take = [&target](std::vector<std::string> const& texts) {
    target = ExpandedNames(texts);
  };
  parser_.add_option_function<std::vector<std::string>>(name, take, help)
      ->required()
      ->type_name("");
}

void Verb::OptionalArgument(std::string const& name, std::string& target, std::string const& help) {
  parser_.add_option(name, target, help)->type_name("");
}

void Verb::Option(std::string const& name, std::string const& type, std::string const& help,
                  Parser parser) {
  parser_.add_option_function<std::string>(name, std::move(parser), help)->type_name(type);
}

void Verb::RepeatedOption(std::string const& name, std::string const& type, std::string const& help,
                          Parser parser) {
  auto const parse_all = [parser = std::move(parser)](std::vector<std::string> const& texts) {
    for (std::string const& text : texts) parser(text);
  };
  parser_.add_option_function<std::vector<std::string>>(name, parse_all, help)
      ->type_name(type)
      ->allow_extra_args(false);
}

void Verb::Number(std::string const& name, int& target, int least, int most,
                  std::string const& help) {
  parser_.add_option(name, target, help)
      ->check(CLI::Range(least, most).description(""))
      ->type_name("N");
}

void Verb::Flag(std::string const& name, bool& target, std::string const& help) {
  parser_.add_flag(name, target, help);
}

void Verb::Needs(std::string const& name, std::string const& other) {
  parser_.get_option(name)->needs(parser_.get_option(other));
}

void Verb::Footer(std::string const& text) { parser_.footer(text); }

void Verb::Runs(std::function<int()> run) {
  parser_.callback([exit_code = &exit_code_, run = std::move(run)] { *exit_code = run(); });
}

Program::Program(std::string const& name, std::string const& version, std::string const& help)
    : name_(name), parser_(std::make_unique<CLI::App>(help, name)) {
  parser_->formatter(std::make_shared<HelpFormatter>());
  parser_->set_version_flag("--version", name + " " + version);
  // What starts with a slash is a file everywhere.
  parser_->allow_windows_style_options(false);
}

Program::~Program() = default;

Verb Program::AddVerb(std::string const& name, std::string const& help) {
  return {*parser_->add_subcommand(name, help), exit_code_};
}

void Program::Footer(std::string const& text) { parser_->footer(text); }

// How to go on after a wrong command line.
std::string Program::Hint(int argc, char** argv) const {
  for (int i = 1; i < argc; ++i) {
    std::string const argument = argv[i];
    std::error_code error;
    if (argument.size() > 1 && argument[0] == '-' &&
        std::filesystem::exists(PathOf(argument), error)) {
      return "write ./" + argument + " for the file of that name";
    }
  }
  auto const verbs = parser_->get_subcommands();
  if (!verbs.empty()) return name_ + " help " + verbs.front()->get_name() + " says more";
  return name_ + " --help says more";
}

int Program::Run(int argc, char** argv) {
  std::string problem;
  try {
    // A word left over may be a wrong verb. Verbs, which are there by now, do not take this over.
    parser_->allow_extras();
    parser_->parse(Reversed(*parser_, argc, argv));
    RequireVerb(*parser_);
    return exit_code_;
  } catch (CLI::ParseError const& error) {
    bool const is_answer = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    if (is_answer) return parser_->exit(error);
    problem = error.what();
  } catch (UsageError const& error) {
    problem = error.what();
  }
  std::fprintf(stderr, "%s: %s (%s)\n", name_.c_str(), problem.c_str(), Hint(argc, argv).c_str());
  return kExitUsage;
}

void Program::Parse(std::string const& verb, std::vector<std::string> const& options,
                    std::vector<std::string> const& names) {
  CheckLastOption(*parser_->get_subcommand(verb), options);
  std::vector<std::string> arguments(names.rbegin(), names.rend());
  arguments.emplace_back("--");
  arguments.insert(arguments.end(), options.rbegin(), options.rend());
  arguments.push_back(verb);
  try {
    parser_->parse(std::move(arguments));
  } catch (CLI::CallForHelp const&) {
    throw UsageError("--help", "is for the command line");
  } catch (CLI::ParseError const& error) {
    throw UsageError(error.what());
  }
}

}  // namespace sorrelin::tool

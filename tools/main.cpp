// sorrelin: the command-line program.
#include <leptonica/allheaders.h>
#include <sorrelin/platform/console.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>

#include "tools/interrupt.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

// A word in the place of the verb that is none is left over.
void RequireVerb(CLI::App const& program) {
  auto const left_over = program.remaining();
  if (!left_over.empty()) throw CLI::ExtrasError("sorrelin", {left_over.front()});
  if (program.get_subcommands().empty()) throw CLI::RequiredError("A verb");
}

int ParseAndRun(int argc, char** argv) {
  CLI::App program("Turns pictures into PDF documents and documents into pictures.", "sorrelin");
  program.set_version_flag("--version", "sorrelin " SORRELIN_VERSION);
  int exit_code = kExitSuccess;
  AddMake(program, exit_code);
  AddAppend(program, exit_code);
  AddCount(program, exit_code);
  AddInfo(program, exit_code);
  AddExtract(program, exit_code);
  AddWords(program, exit_code);
  program.allow_extras();
  try {
    program.parse(argc, argv);
    RequireVerb(program);
  } catch (CLI::ParseError const& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
      return program.exit(error);
    }
    std::fprintf(stderr, "sorrelin: %s (sorrelin --help tells more)\n", error.what());
    return kExitUsage;
  }
  return exit_code;
}

}  // namespace
}  // namespace sorrelin::tool

int main(int argc, char** argv) {
  sorrelin::tool::TidyUpOnInterrupt();
  FailPastFileSizeLimit();
  FailOnClosedPipe();
  setMsgSeverity(L_SEVERITY_NONE);
  try {
    return sorrelin::tool::ParseAndRun(argc, argv);
  } catch (std::bad_alloc const&) {
    std::fputs("sorrelin: there is not enough memory (close other programs)\n", stderr);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "sorrelin: %s\n", error.what());
  }
  return sorrelin::tool::kExitFailure;
}

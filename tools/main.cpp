// sorrelin: the command-line program.
#include <leptonica/allheaders.h>
#include <sorrelin/platform/console.h>
#include <sorrelin/platform/process.h>

#include <cstdio>
#include <exception>
#include <new>

#include "tools/cli/interrupt.h"
#include "tools/cli/messages.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

int ParseAndRun(int argc, char** argv) {
  Program program("sorrelin", SORRELIN_VERSION,
                  "Turns pictures into PDF documents and documents into pictures.");
  AddMake(program);
  AddAppend(program);
  AddCount(program);
  AddInfo(program);
  AddExtract(program);
  AddOcrVerb(program);
  AddWords(program);
  return program.Run(argc, argv);
}

}  // namespace
}  // namespace sorrelin::tool

int main(int argc, char** argv) {
  sorrelin::tool::TidyUpOnInterrupt();
  FailPastFileSizeLimit();
  FailOnClosedPipe();
  KeepFreedMemory();
  // Some of the picture library's messages have no severity.
  setMsgSeverity(L_SEVERITY_NONE);
  leptSetStderrHandler([](char const*) {});
  try {
    return sorrelin::tool::ParseAndRun(argc, argv);
  } catch (std::bad_alloc const&) {
    std::fprintf(stderr, "sorrelin: %s\n", sorrelin::tool::kMemoryProblem);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "sorrelin: %s\n", error.what());
  }
  return sorrelin::tool::kExitFailure;
}

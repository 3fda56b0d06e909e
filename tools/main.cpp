// sorrelin: the command-line program.
#include <leptonica/allheaders.h>
#include <sorrelin/platform/console.h>
#include <sorrelin/platform/process.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "tools/cli/interrupt.h"
#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/documents/child_function.h"
#include "tools/system/program.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

int FailForMemory() {
  std::fprintf(stderr, "sorrelin: %s\n", kMemoryProblem);
  std::fflush(stderr);
  return kExitFailure;
}

// Memory may run short where nothing may be thrown, as in destructors and in other libraries.
void EndForMemory() {
  try {
    if (std::current_exception() != nullptr) throw;
  } catch (std::bad_alloc const&) {
    int const code = FailForMemory();
    try {
      RemoveOutputForGood();
    } catch (std::bad_alloc const&) {
    }
    std::_Exit(code);
  } catch (...) {
  }
  std::abort();
}

void TidyUpAfterCrash() {
  std::fputs(
      "sorrelin: a fault ended this run, probably because of damaged data (run it with fewer files "
      "to find which)\n",
      stderr);
  RemoveOutputForGood();
}

void Prepare() {
  PrepareStreams();
  TrustOwnLibraries();
  std::set_terminate(EndForMemory);
  TidyUpOnCrash(TidyUpAfterCrash, kExitFailure);
  TidyUpOnInterrupt();
  FailPastFileSizeLimit();
  FailOnClosedPipe();
  KeepFreedMemory();
  // Some of the picture library's messages have no severity.
  setMsgSeverity(L_SEVERITY_NONE);
  leptSetStderrHandler([](char const*) {});
}

int ParseAndRun(int argc, char** argv) {
  Program program("sorrelin", SORRELIN_VERSION,
                  "Turns pictures into PDF documents and documents into pictures.");
  AddMake(program);
  AddAppend(program);
  AddBatch(program);
  AddCount(program);
  AddInfo(program);
  AddExtract(program);
  AddOcrVerb(program);
  AddScan(program);
  AddWords(program);
  program.Footer(R"(
The verb comes first, then the document, then the pictures; options may be
anywhere after the verb.

Examples:
  sorrelin make scans.pdf page1.tif page2.tif
  sorrelin extract scans.pdf --pages 1-3

"sorrelin help VERB" says what a verb takes, and "man sorrelin" says it all.)");
  return program.Run(argc, argv);
}

}  // namespace
}  // namespace sorrelin::tool

int main(int argc, char** argv) {
  try {
    sorrelin::tool::Prepare();
    auto const child = sorrelin::tool::RunAsChild(std::span(argv, static_cast<size_t>(argc)),
                                                  sorrelin::tool::NamedFunction::CallByName,
                                                  sorrelin::tool::RemoveOutputForGood);
    if (child) return *child;
    int const code = sorrelin::tool::ParseAndRun(argc, argv);
    return sorrelin::tool::IsOutputWhole() ? code : sorrelin::tool::kExitFailure;
  } catch (std::bad_alloc const&) {
    return sorrelin::tool::FailForMemory();
  } catch (std::exception const& error) {
    sorrelin::tool::PrintNote(error.what());
  }
  return sorrelin::tool::kExitFailure;
}

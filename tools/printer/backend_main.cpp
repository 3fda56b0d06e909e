// The backend "sorrelin" that CUPS starts: it stores documents in folders.
#include <fcntl.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tools/printer/delivery.h"
#include "tools/printer/job_messages.h"

namespace sorrelin::tool {
namespace {

constexpr char kDevice[] =
    R"(file sorrelin:/var/spool/sorrelin "Sorrelin PDF" "PDF documents in a folder for each user" "MFG:Sorrelin;MDL:PDF;CMD:PDF;")";
constexpr int kLeastArguments = 6, kMostArguments = 7;

BackendResult RunJob(int argc, char** argv) {
  char const* const from_environment = std::getenv("DEVICE_URI");
  std::string const uri = from_environment != nullptr ? from_environment : argv[0];
  auto const folder = FolderOfUri(uri);
  if (!folder) {
    SayToScheduler("ERROR", uri + " names no folder, as sorrelin:/var/spool/sorrelin does");
    return BackendResult::kStop;
  }
  Delivery delivery;
  delivery.folder = *folder;
  delivery.user = argv[2];
  delivery.title = argv[3];
  if (argc == kMostArguments) delivery.input = open(argv[6], O_RDONLY | O_CLOEXEC);
  return Deliver(delivery);
}

int Run(int argc, char** argv) {
  if (argc == 1) return std::puts(kDevice) < 0 ? 1 : 0;
  if (argc < kLeastArguments || argc > kMostArguments) {
    SayToScheduler("ERROR", "usage: sorrelin job user title copies options [file]");
    return static_cast<int>(BackendResult::kFailed);
  }
  EndOnRequest();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  return static_cast<int>(RunJob(argc, argv));
}

}  // namespace
}  // namespace sorrelin::tool

int main(int argc, char** argv) {
  try {
    return sorrelin::tool::Run(argc, argv);
  } catch (std::exception const& error) {
    sorrelin::tool::SayToScheduler("ERROR", error.what());
  }
  return static_cast<int>(sorrelin::tool::BackendResult::kFailed);
}

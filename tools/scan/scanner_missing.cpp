// The scanners of a build without libsane: there are none.
#include "tools/scan/scanner.h"

namespace sorrelin::tool {
namespace {

constexpr char kMissing[] =
    "cannot be used: this program was built without libsane (build it with libsane-dev)";

}  // namespace

bool Scanner::List(std::vector<std::string>&, std::vector<std::string>&, std::string& problem) {
  return problem = kMissing, false;
}

std::unique_ptr<Scanner> Scanner::Open(std::string const&, std::string& problem) {
  return problem = kMissing, nullptr;
}

}  // namespace sorrelin::tool

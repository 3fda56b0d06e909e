// Names are tried against the files that exist, dangling links included.
#include "tools/scan/document_names.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

bool IsTaken(std::string const& name) {
  std::error_code error;
  return std::filesystem::symlink_status(PathOf(name), error).type() !=
         std::filesystem::file_type::not_found;
}

}  // namespace

DocumentNames::DocumentNames(std::string name) : name_(std::move(name)) {
  auto const pattern = NamePattern::Parse(name_);
  if (pattern && pattern->HasPage() && !pattern->HasPicture()) pattern_ = pattern;
  is_begun_ = !IsPattern();
}

std::string const& DocumentNames::Current() {
  while (!is_begun_) {
    name_ = pattern_->NameOf(++number_);
    is_begun_ = !IsTaken(name_);
  }
  return name_;
}

}  // namespace sorrelin::tool

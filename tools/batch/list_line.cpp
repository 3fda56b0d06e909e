// Parses lines of a list: JSON by libqpdf, and options as those of a command line.
#include "tools/batch/list_line.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <qpdf/JSON.hh>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include "tools/cli/command_line.h"
#include "tools/cli/text.h"
#include "tools/formats/byte_stream.h"
#include "tools/make/make_options.h"

namespace sorrelin::tool {
namespace {

constexpr char kOutput[] = "output";
constexpr char kPictures[] = "pictures";
constexpr char kOptions[] = "options";

struct Parts {
  std::string output;
  std::vector<std::string> pictures;
  std::vector<std::string> options;
};

std::string TextOf(std::string const& key, JSON const& value) {
  std::string text;
  if (!value.getString(text)) throw UsageError(key, "takes text in quotation marks");
  if (text.find('\0') != std::string::npos) throw UsageError(key, "holds a zero character");
  return text;
}

std::vector<std::string> TextsOf(std::string const& key, JSON const& value) {
  std::vector<std::string> texts;
  bool const is_array =
      value.forEachArrayItem([&](JSON item) { texts.push_back(TextOf(key, item)); });
  if (!is_array) throw UsageError(key, "takes an array, as in [\"a\", \"b\"]");
  return texts;
}

JSON ParseJson(std::string const& text) {
  try {
    return JSON::parse(text);
  } catch (std::runtime_error const& error) {
    throw UsageError(std::string("is no JSON: ") + error.what());
  }
}

Parts PartsOf(std::string const& text) {
  Parts parts;
  bool const is_object = ParseJson(text).forEachDictItem([&](std::string const& key, JSON value) {
    if (key == kOutput) {
      parts.output = TextOf(key, value);
    } else if (key == kPictures) {
      parts.pictures = ExpandedNames(TextsOf(key, value));
    } else if (key == kOptions) {
      parts.options = TextsOf(key, value);
    } else {
      throw UsageError(key, "is no key of a line: there are output, pictures and options");
    }
  });
  if (!is_object) throw UsageError("is no JSON object");
  if (parts.output.empty()) throw UsageError(kOutput, "is missing: name the document");
  if (parts.pictures.empty()) throw UsageError(kPictures, "is missing: name files or directories");
  return parts;
}

// What `make` may be asked for, but not on a list.
void CheckForList(Parts const& parts, PageOptions const& pages) {
  if (pages.output != parts.output || pages.images != parts.pictures) {
    throw UsageError(kOptions, "takes options, and no names");
  }
  if (pages.output == kStandardOutput) throw UsageError(kOutput, "must be the name of a file");
  if (std::ranges::find(pages.images, kStandardInput) != pages.images.end()) {
    throw UsageError(kPictures, "- is one file for all lines: name files");
  }
  if (pages.json) throw UsageError("--json", "the file of --results is the report");
}

// FNV-1a of 64 bits, each text with its end.
class Digest {
 public:
  void Add(std::string_view text) {
    for (char const c : text) AddByte(static_cast<unsigned char>(c));
    AddByte(0);
  }
  std::string Hex() const {
    char digits[20];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(value_));
    return digits;
  }

 private:
  void AddByte(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001b3; }

  uint64_t value_ = 0xcbf29ce484222325;
};

std::string SignatureOf(Parts const& parts, std::vector<Input> const& inputs) {
  Digest digest;
  for (std::string const& option : parts.options) digest.Add(option);
  for (Input const& input : inputs) {
    std::error_code error;
    digest.Add(input.name);
    auto const size = std::filesystem::file_size(PathOf(input.name), error);
    digest.Add(error ? "" : std::to_string(size));
    auto const time = std::filesystem::last_write_time(PathOf(input.name), error);
    digest.Add(error ? "" : std::to_string(time.time_since_epoch().count()));
  }
  return digest.Hex();
}

}  // namespace

LineParser::LineParser() : program_("sorrelin", "", "") {
  Verb verb = program_.AddVerb("make", "");
  AddMakeOptions(verb, options_);
  options_.pages.jobs = 1;
  usual_ = options_;
}

ListDocument LineParser::Parse(std::string const& text) {
  Parts const parts = PartsOf(text);
  std::vector<std::string> names = {parts.output};
  std::ranges::copy(parts.pictures, std::back_inserter(names));
  options_ = usual_;
  program_.Parse("make", parts.options, names);
  CheckForList(parts, options_.pages);
  PrepareMake(options_);
  return {options_, SignatureOf(parts, options_.pages.inputs)};
}

}  // namespace sorrelin::tool

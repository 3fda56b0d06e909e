// Expands directories and sorts the input files.
#include "tools/make/input_list.h"

#include <algorithm>
#include <compare>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "tools/cli/text.h"
#include "tools/formats/image_file.h"
#include "tools/system/entries.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

// Endings of picture formats, those included that are not read here: their files are named as
// problems and not passed over.
constexpr std::string_view kPictureEndings[] = {
    ".3fr",  ".apng", ".arw",  ".avif", ".avifs", ".bmp",  ".bpg",  ".cr2",   ".cr3",  ".crw",
    ".dcm",  ".dcr",  ".dds",  ".dib",  ".djv",   ".djvu", ".dng",  ".dpx",   ".emf",  ".eps",
    ".erf",  ".exr",  ".fits", ".flif", ".gif",   ".hdr",  ".heic", ".heics", ".heif", ".hif",
    ".icns", ".ico",  ".iiq",  ".j2c",  ".j2k",   ".jb2",  ".jbig", ".jbig2", ".jfif", ".jls",
    ".jng",  ".jp2",  ".jpc",  ".jpe",  ".jpeg",  ".jpf",  ".jpg",  ".jpx",   ".jxl",  ".jxr",
    ".kdc",  ".mef",  ".mng",  ".mos",  ".mpo",   ".mrw",  ".nef",  ".nrw",   ".orf",  ".pam",
    ".pbm",  ".pcd",  ".pct",  ".pcx",  ".pef",   ".pfm",  ".pgm",  ".pgx",   ".pict", ".png",
    ".pnm",  ".ppm",  ".psb",  ".psd",  ".pwg",   ".qoi",  ".raf",  ".ras",   ".raw",  ".rw2",
    ".rwl",  ".sgi",  ".spix", ".sr2",  ".srf",   ".srw",  ".svg",  ".svgz",  ".tga",  ".tif",
    ".tiff", ".urf",  ".wbmp", ".wdp",  ".webp",  ".wmf",  ".x3f",  ".xbm",   ".xcf",  ".xpm",
    ".xwd"};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// A byte of a name, which sorts the same with the separators of every system.
unsigned char ByteOf(char c) {
  return static_cast<unsigned char>(c == fs::path::preferred_separator ? '/' : c);
}

bool NameLess(std::string_view a, std::string_view b) {
  return std::ranges::lexicographical_compare(a, b, {}, ByteOf, ByteOf);
}

// Takes a run of digits off the front, without its leading zeros.
std::string_view TakeNumber(std::string_view& text) {
  size_t end = 0;
  while (end < text.size() && IsDigit(text[end])) ++end;
  std::string_view number = text.substr(0, end);
  text.remove_prefix(end);
  while (number.size() > 1 && number.front() == '0') number.remove_prefix(1);
  return number;
}

std::strong_ordering CompareNumbers(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() <=> b.size();
  return a <=> b;
}

std::strong_ordering CompareNatural(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      auto const order = CompareNumbers(TakeNumber(a), TakeNumber(b));
      if (order != 0) return order;
      continue;
    }
    auto const order = ByteOf(Lower(a.front())) <=> ByteOf(Lower(b.front()));
    if (order != 0) return order;
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  return a.size() <=> b.size();
}

bool HasPictureEnding(fs::path const& path) {
  std::string ending = NameOf(path.extension());
  std::transform(ending.begin(), ending.end(), ending.begin(), Lower);
  return std::ranges::find(kPictureEndings, ending) != std::end(kPictureEndings);
}

class FolderReader {
 public:
  FolderReader(bool recursive, std::vector<std::string>* ignored)
      : recursive_(recursive), ignored_(ignored) {}

  // Appends the files of a directory by name, or what is wrong with it.
  void Append(std::string const& directory, std::vector<Input>& inputs) {
    Read(directory);
    auto const by_name = [](Input const& a, Input const& b) { return NameLess(a.name, b.name); };
    std::sort(found_.begin(), found_.end(), by_name);
    if (found_.empty()) {
      found_.push_back(
          {directory, "is a directory without pictures (name files, or one with some)"});
    }
    std::move(found_.begin(), found_.end(), std::back_inserter(inputs));
    found_.clear();
  }

 private:
  void Read(std::string const& directory) {
    std::error_code error;
    fs::directory_iterator at(PathOf(directory), error);
    for (fs::directory_iterator const end; !error && at != end; at.increment(error)) {
      if (!IsHidden(at->path())) Take(*at);
    }
    if (error) found_.push_back({directory, error.message() + " (make it readable)"});
  }

  void Take(fs::directory_entry const& entry) {
    std::error_code error;
    std::string const name = NameOf(entry.path());
    fs::file_status const status = entry.status(error);
    bool const link = IsLink(entry);
    if (status.type() == fs::file_type::directory) {
      // A link may lead back to where it is.
      if (recursive_ && !link) Read(name);
    } else if (status.type() == fs::file_type::not_found && link) {
      found_.push_back(
          {name, "is a link to a file that does not exist (remove it, or restore the file)"});
    } else if (status.type() == fs::file_type::regular) {
      TakeFile(entry.path(), name);
    } else {
      Ignore(name);
    }
  }

  void TakeFile(fs::path const& path, std::string const& name) {
    std::string problem;
    if (ByteStream::Open(name, problem) == nullptr) {
      found_.push_back({name, problem});
    } else if (HasPictureEnding(path) || StartsAsPicture(name)) {
      found_.push_back({name, {}});
    } else {
      Ignore(name);
    }
  }

  void Ignore(std::string const& name) {
    if (ignored_ != nullptr) ignored_->push_back(name);
  }

  bool recursive_;
  std::vector<std::string>* ignored_;
  std::vector<Input> found_;
};

}  // namespace

bool NaturalLess(std::string_view a, std::string_view b) {
  auto const order = CompareNatural(a, b);
  return order != 0 ? order < 0 : NameLess(a, b);
}

std::vector<Input> ListInputs(std::vector<std::string> const& names, Sort sort, bool recursive,
                              std::vector<std::string>* ignored) {
  std::vector<Input> inputs;
  FolderReader folders(recursive, ignored);
  for (std::string const& name : names) {
    std::error_code error;
    if (name != kStandardInput && fs::is_directory(PathOf(name), error)) {
      folders.Append(name, inputs);
    } else {
      inputs.push_back({name, {}});
    }
  }
  auto const by_name = [](Input const& a, Input const& b) { return NameLess(a.name, b.name); };
  auto const natural = [](Input const& a, Input const& b) { return NaturalLess(a.name, b.name); };
  if (sort == Sort::kName) std::stable_sort(inputs.begin(), inputs.end(), by_name);
  if (ignored != nullptr) std::sort(ignored->begin(), ignored->end());
  if (sort == Sort::kNatural) std::stable_sort(inputs.begin(), inputs.end(), natural);
  return inputs;
}

}  // namespace sorrelin::tool

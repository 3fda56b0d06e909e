// Directories are looked into through the standard library; names compare by their bytes.
#include "tools/make/input_list.h"

#include <algorithm>
#include <array>
#include <compare>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/formats/image_file.h"

namespace sorrelin::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 21> kPictureEndings = {
    ".bmp", ".dib", ".gif", ".j2k", ".jfif", ".jp2", ".jpe",  ".jpeg", ".jpf",  ".jpg", ".jpx",
    ".pam", ".pbm", ".pgm", ".png", ".pnm",  ".ppm", ".spix", ".tif",  ".tiff", ".webp"};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

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
    auto const order = static_cast<unsigned char>(Lower(a.front())) <=>
                       static_cast<unsigned char>(Lower(b.front()));
    if (order != 0) return order;
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  return a.size() <=> b.size();
}

bool HasPictureEnding(fs::path const& path) {
  std::string ending = path.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), Lower);
  return std::find(kPictureEndings.begin(), kPictureEndings.end(), ending) != kPictureEndings.end();
}

bool IsPicture(fs::directory_entry const& entry) {
  std::error_code error;
  if (!entry.is_regular_file(error) || entry.path().filename().string().starts_with('.')) {
    return false;
  }
  return HasPictureEnding(entry.path()) || StartsAsPicture(entry.path().string());
}

// Appends the pictures of a directory, by name, or what is wrong with it.
void AppendPictures(std::string const& directory, std::vector<Input>& inputs) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator at(directory, error), end; !error && at != end; at.increment(error)) {
    if (IsPicture(*at)) names.push_back(at->path().string());
  }
  std::sort(names.begin(), names.end());
  for (std::string& name : names) inputs.push_back({std::move(name), {}});
  if (error) {
    inputs.push_back({directory, error.message() + " (make it readable)"});
  } else if (names.empty()) {
    inputs.push_back({directory, "is a directory without pictures (name files, or one with some)"});
  }
}

}  // namespace

bool NaturalLess(std::string_view a, std::string_view b) {
  auto const order = CompareNatural(a, b);
  return order != 0 ? order < 0 : a < b;
}

std::vector<Input> ListInputs(std::vector<std::string> const& names, Sort sort) {
  std::vector<Input> inputs;
  for (std::string const& name : names) {
    std::error_code error;
    if (name != kStandardInput && fs::is_directory(name, error)) {
      AppendPictures(name, inputs);
    } else {
      inputs.push_back({name, {}});
    }
  }
  auto const by_name = [](Input const& a, Input const& b) { return a.name < b.name; };
  auto const natural = [](Input const& a, Input const& b) { return NaturalLess(a.name, b.name); };
  if (sort == Sort::kName) std::stable_sort(inputs.begin(), inputs.end(), by_name);
  if (sort == Sort::kNatural) std::stable_sort(inputs.begin(), inputs.end(), natural);
  return inputs;
}

}  // namespace sorrelin::tool

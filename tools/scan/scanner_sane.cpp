// Scanners through libsane.
#include "tools/scan/scanner.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <system_error>
#include <thread>

#include "tools/scan/page_file.h"
#include "tools/scan/sane_library.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kReadBytes = 32768;
constexpr std::chrono::milliseconds kPause(20);  // before a scanner without data is asked again

std::string NumberText(SANE_Option_Descriptor const& option, SANE_Word value) {
  if (option.type != SANE_TYPE_FIXED) return std::to_string(value);
  std::string text = std::to_string(SANE_UNFIX(value));
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text;
}

// The values that an option takes.
std::string ValuesOf(SANE_Option_Descriptor const& option) {
  if (option.type == SANE_TYPE_BOOL) return "yes|no";
  std::string text;
  if (option.constraint_type == SANE_CONSTRAINT_RANGE) {
    SANE_Range const& range = *option.constraint.range;
    return NumberText(option, range.min) + ".." + NumberText(option, range.max);
  }
  if (option.constraint_type == SANE_CONSTRAINT_WORD_LIST) {
    SANE_Word const* const list = option.constraint.word_list;
    for (SANE_Word i = 1; i <= list[0]; ++i) {
      text.append(text.empty() ? "" : "|").append(NumberText(option, list[i]));
    }
  }
  if (option.constraint_type == SANE_CONSTRAINT_STRING_LIST) {
    for (auto const* word = option.constraint.string_list; *word != nullptr; ++word) {
      text.append(text.empty() ? "" : "|").append(*word);
    }
  }
  return text;
}

std::optional<SANE_Word> WordOf(SANE_Option_Descriptor const& option, std::string const& text) {
  if (option.type == SANE_TYPE_BOOL) {
    if (text == "yes") return SANE_TRUE;
    if (text == "no") return SANE_FALSE;
    return std::nullopt;
  }
  double number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  double const most = option.type == SANE_TYPE_FIXED ? 32767 : INT32_MAX;
  if (!(std::abs(number) <= most)) return std::nullopt;
  if (option.type == SANE_TYPE_FIXED) return SANE_FIX(number);
  if (number != std::trunc(number)) return std::nullopt;
  return static_cast<SANE_Word>(number);
}

class SaneScanner : public Scanner {
 public:
  SaneScanner(SaneLibrary const& sane, SANE_Handle handle, std::string name)
      : sane_(sane), handle_(handle), name_(std::move(name)) {}
  ~SaneScanner() override {
    sane_.cancel(handle_);
    sane_.close(handle_);
  }

  std::string const& name() const override { return name_; }

  std::vector<ScannerOption> Options() override {
    std::vector<ScannerOption> options;
    for (SANE_Int i = 1; auto const* option = sane_.get_option_descriptor(handle_, i); ++i) {
      if (!IsUsable(*option)) continue;
      options.push_back(
          {option->name, ValueOf(i, *option), ValuesOf(*option), option->unit == SANE_UNIT_MM});
    }
    return options;
  }

  bool Set(std::string const& name, std::string const& value, std::string& problem) override {
    SANE_Int const index = Find(name);
    if (index == 0) return problem = "has no option " + name + " (--list names them)", false;
    SANE_Option_Descriptor const& option = *sane_.get_option_descriptor(handle_, index);
    std::vector<char> bytes;
    if (!BytesOf(option, value, bytes)) {
      return problem =
                 name + " takes " + ValuesOf(option) + ", not " + value + " (--list has more)",
             false;
    }
    SANE_Int info = 0;
    SANE_Status const status =
        sane_.control_option(handle_, index, SANE_ACTION_SET_VALUE, bytes.data(), &info);
    if (status == SANE_STATUS_GOOD) return true;
    std::string const values = ValuesOf(*sane_.get_option_descriptor(handle_, index));
    return problem = "does not take " + name + " " + value + ": " + sane_.strstatus(status) +
                     (values.empty() ? " (--list has more)" : " (it takes " + values + ")"),
           false;
  }

  int Resolution() override {
    SANE_Int const index = Find("resolution");
    if (index == 0) return 0;
    double dots = 0;
    std::string const text = ValueOf(index, *sane_.get_option_descriptor(handle_, index));
    std::from_chars(text.data(), text.data() + text.size(), dots);
    return static_cast<int>(std::lround(dots));
  }

  int Depth() override {
    SANE_Parameters shape{};
    return sane_.get_parameters(handle_, &shape) == SANE_STATUS_GOOD ? shape.depth : 0;
  }

  Outcome ScanPage(std::filesystem::path const& file, PageStyle const& style,
                   std::function<void()> const& alive, std::string& problem) override {
    SANE_Status status = sane_.start(handle_);
    if (status == SANE_STATUS_NO_DOCS) return Outcome::kNoMorePages;
    SANE_Parameters shape{};
    if (status == SANE_STATUS_GOOD) status = sane_.get_parameters(handle_, &shape);
    if (status != SANE_STATUS_GOOD) return Fail(status, problem);
    alive();
    auto page = PageFile::Create(file, ShapeOf(shape), style, problem);
    bool const one_frame = shape.format == SANE_FRAME_GRAY || shape.format == SANE_FRAME_RGB;
    if (!one_frame) problem = "sends colours one after the other (choose another mode)";
    if (page == nullptr || !one_frame || !ReadLines(*page, alive, problem)) {
      return Outcome::kFailed;
    }
    if (!page->Finish(problem)) return Outcome::kFailed;
    return page->IsShort() ? Outcome::kShortPage : Outcome::kPage;
  }

  void Rest() override { sane_.cancel(handle_); }

 private:
  static LineShape ShapeOf(SANE_Parameters const& shape) {
    return {shape.format == SANE_FRAME_RGB, shape.depth, shape.pixels_per_line,
            shape.bytes_per_line, shape.lines};
  }

  bool ReadLines(PageFile& page, std::function<void()> const& alive, std::string& problem) {
    std::vector<unsigned char> buffer(kReadBytes);
    for (;;) {
      SANE_Int count = 0;
      SANE_Status const status =
          sane_.read(handle_, buffer.data(), static_cast<SANE_Int>(buffer.size()), &count);
      if (status == SANE_STATUS_EOF) return true;
      if (status != SANE_STATUS_GOOD) return Fail(status, problem), false;
      // A scanner over the network that has gone answers so for ever.
      if (count == 0) std::this_thread::sleep_for(kPause);
      if (count > 0) alive();
      if (!page.Add({buffer.data(), static_cast<size_t>(count)}, problem)) return false;
    }
  }

  static bool IsUsable(SANE_Option_Descriptor const& option) {
    return option.name != nullptr && *option.name != '\0' && option.type != SANE_TYPE_GROUP &&
           SANE_OPTION_IS_ACTIVE(option.cap) && SANE_OPTION_IS_SETTABLE(option.cap);
  }

  // 0 if there is no such option.
  SANE_Int Find(std::string const& name) {
    for (SANE_Int i = 1; auto const* option = sane_.get_option_descriptor(handle_, i); ++i) {
      if (IsUsable(*option) && option->name == name) return i;
    }
    return 0;
  }

  std::string ValueOf(SANE_Int index, SANE_Option_Descriptor const& option) {
    if (option.type == SANE_TYPE_BUTTON || option.size <= 0) return "";
    std::vector<char> bytes(static_cast<size_t>(option.size) + sizeof(SANE_Word), '\0');
    if (sane_.control_option(handle_, index, SANE_ACTION_GET_VALUE, bytes.data(), nullptr) !=
        SANE_STATUS_GOOD) {
      return "";
    }
    if (option.type == SANE_TYPE_STRING) return bytes.data();
    SANE_Word word = 0;
    std::memcpy(&word, bytes.data(), sizeof word);
    if (option.type == SANE_TYPE_BOOL) return word == SANE_FALSE ? "no" : "yes";
    return NumberText(option, word);
  }

  // The value as the scanner takes it; a number counts for all elements of a list.
  static bool BytesOf(SANE_Option_Descriptor const& option, std::string const& value,
                      std::vector<char>& bytes) {
    size_t const size = static_cast<size_t>(std::max(option.size, 0));
    bytes.assign(size + sizeof(SANE_Word), '\0');
    if (option.type == SANE_TYPE_BUTTON) return true;
    if (option.type == SANE_TYPE_STRING) {
      if (value.size() >= size) return false;
      std::ranges::copy(value, bytes.begin());
      return true;
    }
    auto const word = WordOf(option, value);
    for (size_t at = 0; word && at + sizeof *word <= size; at += sizeof *word) {
      std::memcpy(bytes.data() + at, &*word, sizeof *word);
    }
    return word.has_value();
  }

  Outcome Fail(SANE_Status status, std::string& problem) {
    problem = std::string("has stopped: ") + sane_.strstatus(status) +
              " (see to the scanner and run this again)";
    return Outcome::kFailed;
  }

  SaneLibrary const& sane_;
  SANE_Handle handle_;
  std::string name_;
};

}  // namespace

bool Scanner::List(std::vector<std::string>& names, std::vector<std::string>& titles,
                   std::string& problem) {
  SaneLibrary const* const sane = LoadSane(problem);
  if (sane == nullptr) return false;
  SANE_Device const** devices = nullptr;
  SANE_Status const status = sane->get_devices(&devices, SANE_FALSE);
  if (status != SANE_STATUS_GOOD) return problem = sane->strstatus(status), false;
  for (; *devices != nullptr; ++devices) {
    names.emplace_back((*devices)->name);
    titles.push_back(std::string((*devices)->vendor) + " " + (*devices)->model + " " +
                     (*devices)->type);
  }
  return true;
}

std::unique_ptr<Scanner> Scanner::Open(std::string const& name, std::string& problem) {
  SaneLibrary const* const sane = LoadSane(problem);
  if (sane == nullptr) return nullptr;
  SANE_Handle handle = nullptr;
  SANE_Status const status = sane->open(name.c_str(), &handle);
  if (status == SANE_STATUS_GOOD) return std::make_unique<SaneScanner>(*sane, handle, name);
  problem = std::string("cannot be opened: ") + sane->strstatus(status) +
            " (sorrelin scan --list names those that are there)";
  return nullptr;
}

}  // namespace sorrelin::tool

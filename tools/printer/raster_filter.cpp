// Pages go into the document one by one, each coded while its rows are read.
#include "tools/printer/raster_filter.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/cli/command_line.h"
#include "tools/cli/output_file.h"
#include "tools/cli/text.h"
#include "tools/formats/byte_stream.h"
#include "tools/formats/raster/raster_stream.h"
#include "tools/make/document.h"
#include "tools/make/pages/page_coder.h"
#include "tools/printer/job_messages.h"
#include "tools/printer/row_coder.h"

namespace sorrelin::tool {
namespace {

constexpr int kLeastArguments = 6, kMostArguments = 7, kMostCopies = 9999;
constexpr int kMostQuality = 100;

std::optional<int> ParseNumber(std::string_view text, int most) {
  int number = 0;
  auto const [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  bool const whole = error == std::errc{} && stop == text.data() + text.size();
  return whole && number >= 1 && number <= most ? std::optional(number) : std::nullopt;
}

// The value of the last option of that name; empty if there is none.
std::string_view OptionOf(std::string_view options, std::string_view name) {
  std::string_view value;
  while (!options.empty()) {
    std::string_view const word = options.substr(0, options.find(' '));
    options.remove_prefix(std::min(options.size(), word.size() + 1));
    bool const found =
        word.size() > name.size() && word.starts_with(name) && word[name.size()] == '=';
    if (found) value = word.substr(name.size() + 1);
  }
  return value;
}

// A text for the document's description: what is not UTF-8 is left out, what is too long is cut.
std::u16string DescriptionText(std::string const& text) {
  auto units = Utf16(OneLine(text)).value_or(std::u16string());
  if (units.size() <= kMaxTextUnits) return units;
  units.resize(kMaxTextUnits);
  bool const is_half = units.back() >= 0xD800 && units.back() < 0xDC00;
  if (is_half) units.pop_back();
  return units;
}

class RasterFilter {
 public:
  explicit RasterFilter(FilterJob const& job) : job_(job), coder_(style_) { ReadOptions(); }

  int Run() {
    bool const done = Write();
    if (!problem_.empty()) SayToScheduler("ERROR", "The job " + problem_);
    return done ? kExitSuccess : kExitFailure;
  }

 private:
  // Each of these says in problem_ what went wrong.

  bool Write() {
    auto const output = OutputFile::Temporary(problem_);
    if (output == nullptr) return false;
    {
      Document document;
      Description description;
      description.title = DescriptionText(job_.title);
      description.author = DescriptionText(job_.user);
      if (!document.Create(output->path(), description, problem_)) return false;
      for (int copy = 0; copy < job_.copies; ++copy) {
        if (!AddPages(document)) return false;
      }
      if (!document.Finish(problem_)) return false;
    }
    return output->Commit(problem_);
  }

  bool AddPages(Document& document) {
    auto const bytes = ByteStream::Open(job_.file, problem_);
    if (bytes == nullptr) return false;
    auto const kind = RasterKindOf(bytes->Peek(kAppleSyncBytes));
    if (!kind) return problem_ = "is no print raster (send it as another type)", false;
    RasterStream stream(*bytes, *kind);
    unsigned const before = document.PageCount();
    while (auto const page = stream.NextPage(problem_)) {
      if (!AddPage(document, stream, *page)) return false;
      SayToScheduler("PAGE", std::to_string(document.PageCount()) + " 1");
    }
    if (problem_.empty() && document.PageCount() == before)
      problem_ = "has no pages (print it again)";
    if (problem_.empty()) problem_ = bytes->problem();
    return problem_.empty();
  }

  bool AddPage(Document& document, RasterStream& stream, RasterPage page) {
    page.coding = coding_.value_or(page.coding);
    page.quality = quality_.value_or(page.quality);
    StoredImage image;
    std::vector<BYTE> coded;
    if (!CodeRows(stream, page, coded, image.form)) return false;
    image.bytes = coded;
    image.width = page.width;
    image.height = page.height;
    image.dpi = page.dpi;
    image.frame = page.frame;
    auto const result = coder_.Code(image, problem_);
    if (result == nullptr) return false;
    return document.Add(*result, problem_) == PageResult::kWritten;
  }

  bool CodeRows(RasterStream& stream, RasterPage const& page, std::vector<BYTE>& coded,
                ImageForm& form) {
    auto const coder = MakeRowCoder(page, coded);
    std::vector<BYTE> row(page.RowBytes());
    for (int y = 0; y < page.height; ++y) {
      if (!stream.ReadRow(row, problem_)) return problem_ = DamageText(problem_), false;
      if (!coder->Row(row)) return problem_ = kMemoryText, false;
    }
    form = coder->Form();
    if (!coder->Finish()) return problem_ = kMemoryText, false;
    return true;
  }

  void ReadOptions() {
    std::string_view const coding = OptionOf(job_.options, "SorrelinCoding");
    if (coding == "Flate") coding_ = RasterCoding::kFlate;
    if (coding == "JPEG") coding_ = RasterCoding::kJpeg;
    quality_ = ParseNumber(OptionOf(job_.options, "SorrelinQuality"), kMostQuality);
  }

  // What DamageText of pictures says, for a job that only can be printed again.
  static std::string DamageText(std::string const& damage) {
    return "is damaged: " + damage + " (print it again)";
  }

  FilterJob const& job_;
  PageStyle style_;
  PageCoder coder_;
  std::optional<RasterCoding> coding_;
  std::optional<int> quality_;
  std::string problem_;
};

}  // namespace

bool ReadFilterArguments(int argc, char** argv, FilterJob& job) {
  if (argc < kLeastArguments || argc > kMostArguments) {
    SayToScheduler("ERROR", "usage: rastertosorrelin job user title copies options [file]");
    return false;
  }
  auto const copies = ParseNumber(argv[4], kMostCopies);
  if (!copies) {
    SayToScheduler("ERROR", std::string("The job asks for ") + argv[4] +
                                " copies, which is no number from 1 to 9999");
    return false;
  }
  job.user = argv[2];
  job.title = argv[3];
  job.options = argv[5];
  if (argc == kMostArguments) job.file = argv[6];
  if (argc == kMostArguments) job.copies = *copies;
  return true;
}

int RunRasterFilter(FilterJob const& job) { return RasterFilter(job).Run(); }

}  // namespace sorrelin::tool

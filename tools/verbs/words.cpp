// sorrelin words: what is written in pictures and on pages.
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/cli/text.h"
#include "tools/formats/image_file.h"
#include "tools/formats/image_source.h"
#include "tools/make/pages/page_options.h"
#include "tools/ocr/page_scan.h"
#include "tools/ocr/page_texts.h"
#include "tools/ocr/recognized_words.h"
#include "tools/ocr/text_layers.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

struct WordsOptions {
  std::vector<std::string> files;
  OcrOptions ocr;
  WordForm form = WordForm::kJson;
  bool text = false;
  int jobs = UsualJobs();
};

// Whether the program prints the words itself, and not what the engine wrote.
bool IsOwnForm(WordForm form) { return form == WordForm::kJson || form == WordForm::kText; }

constexpr char kDocumentStart[] = "%PDF-";

bool IsDocument(std::string const& name) {
  if (name == kStandardInput) return false;
  std::array<char, sizeof kDocumentStart - 1> start{};
  std::ifstream file(name, std::ios::binary);
  return file.read(start.data(), start.size()) &&
         std::string_view(start.data(), start.size()) == kDocumentStart;
}

// Pages of picture files that are recognised together, before the first of them is printed.
constexpr size_t kPagesAJob = 8;

// Whether several processes can open a file, each for itself.
bool CanBeShared(std::string const& name) {
  std::error_code ignored;
  return name != kStandardInput && std::filesystem::is_regular_file(PathOf(name), ignored);
}

std::string PlaceOf(int page) { return "page " + std::to_string(page) + ": "; }

// A page of a picture file, or the problem of the file at this place.
struct Entry {
  std::string file;
  int page = 1;         // of the file
  std::string place{};  // of the page in the file, for problems; empty if it is the only one
  std::string problem{};
};

class Words {
 public:
  explicit Words(WordsOptions const& options) : options_(options) {}

  int Run() {
    std::string problem;
    if (!CheckOcr({.languages = options_.ocr.languages}, problem)) {
      Report("--language", problem);
      return kExitFailure;
    }
    std::fputs(HeadOf(options_.form), stdout);
    for (std::string const& name : options_.files) {
      if (IsDocument(name)) {
        Flush();
        ReadDocument(name);
      } else {
        ReadImage(name);
      }
    }
    Flush();
    std::fputs(TailOf(options_.form), stdout);
    return failed_ ? kExitFailure : kExitSuccess;
  }

 private:
  void Report(std::string const& name, std::string const& problem) {
    PrintProblem(name == kStandardInput ? "standard input" : name, problem);
    failed_ = true;
  }

  void ReadDocument(std::string const& name) {
    std::string problem;
    auto const survey = SurveyText(name, problem);
    if (!survey) return Report(name, problem);
    for (PageText const& text : Recognize({.document = name}, survey->pages, options_.jobs)) {
      int const page = static_cast<int>(text.page) + 1;
      if (!text.problem.empty()) Report(name, PlaceOf(page) + text.problem);
      for (PictureText const& picture : text.pictures) {
        Print(name, page, picture);
      }
    }
  }

  std::vector<PageText> Recognize(ScannedPages const& scanned, size_t count, int jobs) {
    std::vector<unsigned> pages(count);
    std::iota(pages.begin(), pages.end(), 0U);
    OcrOptions options = options_.ocr;
    options.first_number = number_;
    number_ += static_cast<int>(count);
    return RecognizePages(scanned, pages, options, jobs, [](PageText const&) {});
  }

  void ReadImage(std::string const& name) {
    std::string problem;
    auto const file = ImageFile::Open(name, problem);
    if (file == nullptr) return AddProblem(name, problem);
    bool const is_shared = CanBeShared(name);
    int first = 1;
    for (int number = 0; auto const source = file->Next(problem); ++number) {
      if (!is_shared) Flush();
      AddPages(name, *source, first, first > 1 || !file->AtEnd());
      for (int page = 0; is_shared && page < source->PageCount(); ++page) {
        pages_.push_back({name, number, page});
      }
      if (!is_shared) FlushSource(*source);
      if (pages_.size() >= kPagesAJob * static_cast<size_t>(options_.jobs)) Flush();
      first += source->PageCount();
    }
    if (!problem.empty()) AddProblem(name, problem);
  }

  void AddProblem(std::string const& name, std::string const& problem) {
    entries_.push_back({.file = name, .problem = problem});
  }

  // `first` is the number of the source's first page in the file; `several` sources make up the
  // file.
  void AddPages(std::string const& name, ImageSource& source, int first, bool several) {
    int const pages = source.PageCount();
    for (int page = first; page < first + pages; ++page) {
      entries_.push_back({name, page, several || pages > 1 ? PlaceOf(page) : ""});
    }
    if (std::string const damage = source.Damage(); !damage.empty()) AddProblem(name, damage);
  }

  // Recognises and prints the pages of files that have been collected.
  void Flush() {
    if (entries_.empty()) return;
    PrintEntries(Recognize({.files = pages_}, pages_.size(), options_.jobs));
    pages_.clear();
  }

  // The same for pages of a source that only this process can read.
  void FlushSource(ImageSource& source) {
    PrintEntries(Recognize({.source = &source}, static_cast<size_t>(source.PageCount()), 1));
  }

  void PrintEntries(std::vector<PageText> const& texts) {
    auto text = texts.begin();
    for (Entry const& entry : entries_) {
      if (!entry.problem.empty()) {
        Report(entry.file, entry.problem);
        continue;
      }
      if (!text->problem.empty()) Report(entry.file, entry.place + text->problem);
      for (PictureText const& picture : text->pictures) Print(entry.file, entry.page, picture);
      ++text;
    }
    entries_.clear();
  }

  void Print(std::string const& name, int page, PictureText const& text) {
    if (IsOwnForm(options_.form)) {
      auto const words = WordsOfPage(text.data, text.place, text.shown);
      if (!words)
        return Report(
            name, PlaceOf(page) + "the engine's answer cannot be read (see that Tesseract works)");
      PrintWords(name, page, *words);
    } else {
      std::fputs(text.data.c_str(), stdout);
    }
    FlushOutput();
  }

  void PrintWords(std::string const& name, int page, std::vector<HocrWord> const& words) {
    if (options_.form == WordForm::kText) {
      if (printed_) std::fputc('\f', stdout);
      std::fputs(WordText(words).c_str(), stdout);
    } else {
      for (HocrWord const& word : words) std::puts(WordJson(name, page, word).c_str());
    }
    printed_ = true;
  }

  WordsOptions const& options_;
  std::vector<Entry> entries_;   // what is to be printed next
  std::vector<FilePage> pages_;  // of files, those of the entries without a problem
  int number_ = 0;               // pages so far
  bool printed_ = false;
  bool failed_ = false;
};

WordForm ParseForm(std::string const& text) {
  if (auto const form = WordFormOfName(text)) return *form;
  throw UsageError("--format", "takes json, text, hocr, tsv or alto, not " + text);
}

constexpr char kFooter[] =
    R"(Files are pictures, or documents, whose pages are recognised. In the usual form
"json" each word is a line with the keys file, page (from 1, of the file), text,
box (left, top, right and bottom in pixels from the picture's upper left corner)
and font_size (in points). In "text", which --text stands for too, the words of
a page are lines of text, with a form feed between pages. "hocr", "tsv" and
"alto" are Tesseract's forms, of all files together.

Pictures that are not upright are turned before they are recognised, unless
--orientation is keep. Boxes of JSON are those before the turn, and those of
hOCR, TSV and ALTO those after it. For JSON and text, pictures tilted by a few
degrees are straightened before they are recognised; boxes of JSON are those
around the words in the picture as it is.

The recognition is Tesseract's, whose data for each language are a package of
their own; several languages are joined as in eng+deu, and auto takes those of
the locale. - is standard input, for pictures.

Exit status: 0 all is done; 1 a file failed and was named; 2 the command line is
wrong.

Examples:
  sorrelin words letter.png
  sorrelin words --format text --language deu *.tif >letters.txt
  sorrelin words --format hocr scans.pdf >scans.html)";

}  // namespace

void AddWords(Program& program) {
  Verb verb = program.AddVerb("words", "Print the words that pictures and pages show");
  auto const options = std::make_shared<WordsOptions>();
  options->ocr.turn = true;
  verb.Argument("FILE", options->files, "Pictures and documents");
  verb.Option("--format", "KIND", "json, text, hocr, tsv or alto",
              [options](std::string const& text) { options->form = ParseForm(text); });
  verb.Flag("--text", options->text, "Print plain text, as --format text does");
  AddLanguage(verb, options->ocr.languages);
  AddRecognition(verb, options->ocr);
  AddSegmentation(verb, options->ocr.segmentation);
  AddJobs(verb, options->jobs);
  verb.Footer(kFooter);
  verb.Runs([options] {
    if (options->text) options->form = WordForm::kText;
    options->ocr.form = EngineFormOf(options->form);
    options->ocr.straighten = IsOwnForm(options->form);
    options->ocr.must_turn = false;
    return Words(*options).Run();
  });
}

}  // namespace sorrelin::tool

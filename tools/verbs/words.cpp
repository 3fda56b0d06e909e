// sorrelin words: what is written in pictures and on pages.
#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/formats/image_file.h"
#include "tools/formats/picture/plain_picture.h"
#include "tools/make/pages/page_options.h"
#include "tools/ocr/ocr_engine.h"
#include "tools/ocr/page_scan.h"
#include "tools/ocr/page_texts.h"
#include "tools/ocr/recognized_words.h"
#include "tools/ocr/straightening.h"
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

// Recognises pictures one after the other, in this process.
class PictureReader {
 public:
  // False with the reason in `problem` if nothing can be recognised.
  bool Open(OcrOptions const& options, std::string& problem) {
    text_engine_ = OcrEngine::Open(options.languages, problem);
    std::string ignored;
    if (options.turn) turn_engine_ = OcrEngine::Open(kOrientationData, ignored);
    return text_engine_ != nullptr;
  }

  // The text of a picture that is the page of this number, from 0, among all. nullopt with the
  // reason in `problem`.
  std::optional<PictureText> Read(Picture picture, OcrOptions const& options, int number,
                                  std::string& problem) {
    Pix* const pix = picture.pix.get();
    if (!FitsEngine(static_cast<uint64_t>(pixGetWidth(pix)),
                    static_cast<uint64_t>(pixGetHeight(pix)), problem)) {
      return std::nullopt;
    }
    SheetSize const size = SizeOf(pix);
    ScannedPicture scanned = {std::move(picture), PixelPlace(size), size};
    if (!MakeUpright(scanned, options)) return problem = kMemoryText, std::nullopt;
    if (!text_engine_->Recognize(std::move(scanned.picture), options.segmentation, options.timeout,
                                 problem)) {
      return std::nullopt;
    }
    auto result = text_engine_->Result(options.form, number, problem);
    if (!result) return std::nullopt;
    return PictureText{std::move(*result), scanned.place, size};
  }

 private:
  // False when memory is short.
  bool MakeUpright(ScannedPicture& scanned, OcrOptions const& options) {
    int const turns = turn_engine_ != nullptr ? turn_engine_->QuarterTurns(scanned.picture) : 0;
    return TurnQuarters(scanned, turns) && (!options.straighten || Straighten(scanned));
  }

  std::unique_ptr<OcrEngine> text_engine_;
  std::unique_ptr<OcrEngine> turn_engine_;
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
        ReadDocument(name);
      } else {
        ReadImage(name);
      }
    }
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
    std::vector<unsigned> pages(survey->pages);
    std::iota(pages.begin(), pages.end(), 0U);
    OcrOptions options = options_.ocr;
    options.first_number = number_;
    number_ += static_cast<int>(pages.size());
    for (PageText const& text :
         RecognizePages(name, pages, options, options_.jobs, [](PageText const&) {})) {
      int const page = static_cast<int>(text.page) + 1;
      if (!text.problem.empty()) Report(name, PlaceOf(page) + text.problem);
      for (PictureText const& picture : text.pictures) {
        Print(name, page, picture);
      }
    }
  }

  void ReadImage(std::string const& name) {
    std::string problem;
    auto const file = ImageFile::Open(name, problem);
    if (file == nullptr || !OpenReader(problem)) return Report(name, problem);
    int first = 1;
    while (auto const source = file->Next(problem)) {
      ReadSource(name, *source, first, first > 1 || !file->AtEnd());
      first += source->PageCount();
    }
    if (!problem.empty()) Report(name, problem);
  }

  bool OpenReader(std::string& problem) {
    if (!reader_is_open_) reader_is_open_ = reader_.Open(options_.ocr, problem);
    return reader_is_open_;
  }

  // `first` is the number of the source's first page in the file; `several` sources make up the
  // file.
  void ReadSource(std::string const& name, ImageSource& source, int first, bool several) {
    int const pages = source.PageCount();
    for (int page = 0; page < pages; ++page) {
      std::string problem;
      if (auto const text = ReadPage(source, page, problem)) {
        Print(name, first + page, *text);
      } else {
        Report(name, (several || pages > 1 ? PlaceOf(first + page) : "") + problem);
      }
    }
    if (std::string const damage = source.Damage(); !damage.empty()) Report(name, damage);
  }

  std::optional<PictureText> ReadPage(ImageSource& source, int page, std::string& problem) {
    auto picture = source.Decode(page, problem);
    if (picture && !picture->damage.empty()) problem = DamageText(picture->damage);
    if (!picture || !picture->damage.empty()) return std::nullopt;
    if (!GiveUpSamples(*picture)) return problem = kMemoryText, std::nullopt;
    return reader_.Read(std::move(*picture), options_.ocr, number_++, problem);
  }

  static std::string PlaceOf(int page) { return "page " + std::to_string(page) + ": "; }

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
  PictureReader reader_;
  bool reader_is_open_ = false;
  int number_ = 0;  // pages so far
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
    return Words(*options).Run();
  });
}

}  // namespace sorrelin::tool

// sorrelin words: what is written in pictures.
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/cli/output_file.h"
#include "tools/formats/image_file.h"
#include "tools/ocr/recognized_words.h"
#include "tools/verbs/verbs.h"

namespace sorrelin::tool {
namespace {

struct WordsOptions {
  std::vector<std::string> images;
  std::string language = "eng";
  bool text = false;
};

class Words {
 public:
  explicit Words(WordsOptions const& options) : options_(options), reader_(options.language) {}

  int Run() {
    for (std::string const& name : options_.images) ReadImage(name);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      Report("standard output",
             "cannot be written: " + std::generic_category().message(errno) + kRoomRemedy);
    }
    return failed_ ? kExitFailure : kExitSuccess;
  }

 private:
  void Report(std::string const& name, std::string const& problem) {
    PrintProblem(name == kStandardInput ? "standard input" : name, problem);
    failed_ = true;
  }

  void ReadImage(std::string const& name) {
    std::string problem;
    auto const file = ImageFile::Open(name, problem);
    if (file == nullptr) return Report(name, problem);
    int first = 1;
    while (auto const source = file->Next(problem)) {
      ReadSource(name, *source, first, first > 1 || !file->AtEnd());
      first += source->PageCount();
    }
    if (!problem.empty()) Report(name, problem);
  }

  // `first` is the number of the source's first page in the file; `several` sources make up the
  // file.
  void ReadSource(std::string const& name, ImageSource& source, int first, bool several) {
    int const pages = source.PageCount();
    for (int page = 0; page < pages; ++page) {
      std::string problem;
      if (auto const words = ReadPage(source, page, problem)) {
        Print(name, first + page, *words);
      } else {
        std::string const place = "page " + std::to_string(first + page) + ": ";
        Report(name, (several || pages > 1 ? place : "") + problem);
      }
    }
    if (std::string const damage = source.Damage(); !damage.empty()) Report(name, damage);
  }

  std::optional<std::vector<HocrWord>> ReadPage(ImageSource& source, int page,
                                                std::string& problem) {
    auto picture = source.Decode(page, problem);
    if (picture && !picture->damage.empty()) problem = DamageText(picture->damage);
    if (!picture || !picture->damage.empty()) return std::nullopt;
    return reader_.Read(std::move(*picture), problem);
  }

  void Print(std::string const& name, int page, std::vector<HocrWord> const& words) {
    if (options_.text) {
      if (printed_) std::fputc('\f', stdout);
      std::fputs(WordText(words).c_str(), stdout);
    } else {
      for (HocrWord const& word : words) std::puts(WordJson(name, page, word).c_str());
    }
    std::fflush(stdout);
    printed_ = true;
  }

  WordsOptions const& options_;
  WordReader reader_;
  bool printed_ = false;
  bool failed_ = false;
};

std::string ParseLanguage(std::string const& text) {
  if (text.empty()) throw UsageError("--language", "is empty");
  return text;
}

constexpr char kFooter[] =
    R"(Each word is a line of JSON with the keys file, page (from 1, of the file), text,
box (left, top, right and bottom in pixels from the picture's upper left corner)
and font_size (in points). With --text the words of a page are lines of text,
and a form feed stands between pages.

The recognition is Tesseract's, whose data for each language are a package of
their own; several languages are joined as in eng+deu. - is standard input.

Exit status: 0 all is done; 1 a file failed and was named; 2 the command line is
wrong.

Examples:
  sorrelin words letter.png
  sorrelin words --text --language deu *.tif >letters.txt)";

}  // namespace

void AddWords(Program& program) {
  Verb verb = program.AddVerb("words", "Print the words that pictures show");
  auto const options = std::make_shared<WordsOptions>();
  verb.Argument("IMAGE", options->images, "Files with pictures");
  verb.Flag("--text", options->text, "Print plain text");
  verb.Option("--language", "LANG", "Of the text, as Tesseract names it (eng)",
              [options](std::string const& text) { options->language = ParseLanguage(text); });
  verb.Footer(kFooter);
  verb.Runs([options] { return Words(*options).Run(); });
}

}  // namespace sorrelin::tool

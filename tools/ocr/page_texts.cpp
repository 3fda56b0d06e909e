// The jobs that recognise pages: number k of n takes every n-th page from the k-th on. Its process
// sends messages: a letter, the number of bytes that follow (32 bits), and these bytes.
//
//   B  a page begins
//   T  its text is on its side: clockwise quarter turns (32 bits)
//   L  the text of a picture: its matrix (6 doubles), its size (2 doubles), the engine's result
//   E  the page is done
//   P  the page has no text: why
//   X  nothing can be recognised: why
#include "tools/ocr/page_texts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/cli/messages.h"
#include "tools/cli/watchdog.h"
#include "tools/documents/child_function.h"
#include "tools/formats/image_source.h"
#include "tools/ocr/languages.h"
#include "tools/ocr/straightening.h"

namespace sorrelin::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kHeadBytes = 5;
// The engine looks at the clock between words only. What it does before the first word can take
// much longer on a noisy page, so its process is ended this long after the time was up.
constexpr std::chrono::seconds kGrace(2);
constexpr double kPointsPerInch = 72;
constexpr double kMaxStretch = 1.2;                // of pixels that are taken for square
constexpr size_t kEnoughBytes = size_t{64} << 20;  // of decoded pages, for one process
constexpr char kEndedRecognition[] =
    "cannot be recognised: it ends the process that reads it (see that Tesseract works on this "
    "picture)";
constexpr char kBlank[] = " \t\r\n\f";

bool Send(ParentLink& link, char type, std::string_view payload) {
  DWORD const size = static_cast<DWORD>(payload.size());
  char head[kHeadBytes] = {type};
  std::memcpy(head + 1, &size, sizeof size);
  return link.SendText({head, sizeof head}) && link.SendText(payload);
}

template <typename Value>
std::string BytesOf(Value const& value) {
  return {reinterpret_cast<char const*>(&value), sizeof value};
}

template <typename Value>
Value ValueOf(std::string_view bytes) {
  Value value{};
  std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
  return value;
}

// Where a picture's text belongs.
struct Spot {
  Matrix place;
  SheetSize shown;
};

// Gives the picture the resolution in which it is shown, and square pixels.
bool MakeSquare(ScannedPicture& scanned) {
  PixPtr& pix = scanned.picture.pix;
  double const width = pixGetWidth(pix.get());
  double const height = pixGetHeight(pix.get());
  double const across = width * kPointsPerInch / scanned.place.Width();
  double const down = height * kPointsPerInch / scanned.place.Height();
  double const dpi = std::max(across, down);
  if (dpi > kMaxStretch * std::min(across, down)) {
    pix.reset(pixScale(pix.get(), static_cast<l_float32>(dpi / across),
                       static_cast<l_float32>(dpi / down)));
  }
  int const dots = static_cast<int>(std::lround(std::min(dpi, 1e6)));
  scanned.picture.dpi = {dots, dots};
  return pix != nullptr;
}

// The work of one process.
class Recognizer {
 public:
  Recognizer(OcrOptions const& options, ParentLink& link) : options_(options), link_(link) {}

  bool Open(ScannedPages const& pages, std::string& problem) {
    scanner_ = OpenScanner(pages, problem);
    if (scanner_ == nullptr) return false;
    if (options_.turn) turn_engine_ = OcrEngine::Open(kOrientationData, problem);
    if (options_.must_turn && options_.turn && turn_engine_ == nullptr) return false;
    if (!options_.languages.empty()) text_engine_ = OcrEngine::Open(options_.languages, problem);
    return options_.languages.empty() || text_engine_ != nullptr;
  }

  void Read(unsigned page) {
    std::string problem = kMemoryText;
    bool done = false;
    try {
      done = ReadPictures(page, problem);
    } catch (std::bad_alloc const&) {
    }
    if (done) {
      Send(link_, 'E', {});
    } else {
      Send(link_, 'P', problem);
    }
  }

 private:
  bool ReadPictures(unsigned page, std::string& problem) {
    auto pictures = scanner_->Scan(page, problem);
    if (pictures.empty()) return false;
    if (!IsLayer()) {
      for (ScannedPicture& scanned : pictures) scanned.place = PixelPlace(scanned.shown);
    }
    if (turn_engine_ != nullptr && !Turn(pictures)) return false;
    if (text_engine_ == nullptr) return true;
    bool has_words = false;
    for (ScannedPicture& scanned : pictures) {
      if (!ReadPicture(page, scanned, has_words, problem)) return false;
    }
    if (has_words || !IsLayer()) return true;
    problem = "shows no words, and gets no text (see that its language is the right one)";
    return false;
  }

  // Whether the text goes on the page.
  bool IsLayer() const { return options_.form == AVERNA_PDF; }

  // The first picture decides for the page.
  bool Turn(std::vector<ScannedPicture>& pictures) {
    if (IsLayer() && !MakeSquare(pictures.front())) return false;
    int const quarters = turn_engine_->QuarterTurns(pictures.front().picture);
    if (quarters == 0) return true;
    Send(link_, 'T', BytesOf(quarters));
    return std::all_of(pictures.begin(), pictures.end(),
                       [&](ScannedPicture& scanned) { return TurnQuarters(scanned, quarters); });
  }

  bool ReadPicture(unsigned page, ScannedPicture& scanned, bool& has_words, std::string& problem) {
    if (IsLayer() && !MakeSquare(scanned)) return false;
    if (options_.straighten && !Straighten(scanned)) return false;
    if (!text_engine_->Recognize(std::move(scanned.picture), options_.segmentation,
                                 options_.timeout, problem)) {
      return false;
    }
    auto const text = text_engine_->Result(AVERNA_TEXT, 0, problem);
    if (!text) return false;
    bool const is_blank = text->find_first_not_of(kBlank) == std::string::npos;
    if (is_blank && IsLayer()) return true;
    int const number = options_.first_number + static_cast<int>(page);
    auto const result = text_engine_->Result(options_.form, number, problem);
    if (!result) return false;
    has_words = true;
    return Send(link_, 'L', BytesOf(Spot{scanned.place, scanned.shown}) + *result);
  }

  OcrOptions const& options_;
  ParentLink& link_;
  std::unique_ptr<PageScanner> scanner_;
  std::unique_ptr<OcrEngine> text_engine_;
  std::unique_ptr<OcrEngine> turn_engine_;
};

std::chrono::seconds TimeLimit(OcrOptions const& options) {
  std::chrono::seconds const timeout(options.timeout);
  return timeout.count() > 0 ? timeout + kGrace : timeout;
}

void ReadAll(Recognizer& recognizer, std::vector<unsigned> const& pages, OcrOptions const& options,
             ParentLink& link) {
  Watchdog watchdog(TimeLimit(options), [] { std::_Exit(EXIT_FAILURE); });
  for (unsigned const page : pages) {
    Send(link, 'B', {});
    watchdog.Begin();
    recognizer.Read(page);
  }
}

// The work of a child.
void RecognizeHere(ParentLink& link, ScannedPages const& scanned, OcrOptions const& options,
                   std::vector<unsigned> const& pages) {
  std::string problem;
  std::string_view reason = kMemoryProblem;
  try {
    Recognizer recognizer(options, link);
    if (recognizer.Open(scanned, problem)) return ReadAll(recognizer, pages, options, link);
    reason = problem;
  } catch (std::bad_alloc const&) {
  }
  Send(link, 'X', reason);
}

ChildFunction<ScannedPages, OcrOptions, std::vector<unsigned>> const kRecognize("recognise",
                                                                                RecognizeHere);

std::optional<std::string> CheckHere(OcrOptions const& options, std::string& problem) {
  for (std::string const& data :
       {options.languages, std::string(options.turn ? kOrientationData : "")}) {
    if (!data.empty() && OcrEngine::Open(data, problem) == nullptr) return std::nullopt;
  }
  return "";
}

ChildFunction<OcrOptions> const kCheck("check recognition", CheckHere);

// Why a process came to no page, by how it ended: damaged data end it as they are loaded.
std::string EngineProblem(std::string const& problem, OcrOptions const& options) {
  return problem == kEndedReader ? DamagedLanguage(options.languages) : problem;
}

// What the jobs have in common.
struct Run {
  ScannedPages const& scanned;
  OcrOptions const& options;
  PageTextSink const& done;
  std::mutex mutex;  // of `done`
};

// One share of the pages, on a thread of its own: its processes, one after the other.
class Job {
 public:
  Job(Run& run, std::vector<PageText*> pages) : run_(run), pages_(std::move(pages)) {}

  void operator()() {
    while (next_ < pages_.size()) {
      rest_.clear();
      reading_ = false;
      stop_problem_.reset();
      end_ = pages_.size();
      std::string problem = kMemoryProblem;
      RunProcess(problem);
      if (stop_problem_) return FailUntil(pages_.size(), *stop_problem_);
      if (next_ == end_) continue;
      if (!reading_) {
        FailUntil(end_, EngineProblem(problem, run_.options));
        continue;
      }
      pages_[next_]->pictures.clear();
      if (problem == kEndedReader) problem = kEndedRecognition;
      Finish(HasTimedOut() ? kTimeoutText : problem);
    }
  }

 private:
  void RunProcess(std::string& problem) {
    try {
      std::vector<unsigned> rest;
      for (size_t i = next_; i < end_; ++i) rest.push_back(pages_[i]->page);
      RunChild(
          RecognizeWork(rest), [this](std::span<BYTE const> bytes) { return Take(bytes); },
          problem);
    } catch (std::bad_alloc const&) {
    }
  }

  ChildWork RecognizeWork(std::vector<unsigned>& pages) {
    ChildWork work = kRecognize.With(run_.scanned, run_.options, pages);
    if (run_.scanned.source == nullptr) return work;
    work.pack = [this, &pages](std::string& bytes) {
      ScannedPages const decoded = Decoded(*run_.scanned.source, pages, kEnoughBytes);
      pages.resize(decoded.decoded.size());
      end_ = next_ + pages.size();
      kRecognize.With(decoded, run_.options, pages).pack(bytes);
    };
    return work;
  }

  bool Take(std::span<BYTE const> bytes) {
    rest_.append(reinterpret_cast<char const*>(bytes.data()), bytes.size());
    size_t at = 0;
    while (rest_.size() - at >= kHeadBytes) {
      DWORD const size = ValueOf<DWORD>(std::string_view(rest_).substr(at + 1));
      if (rest_.size() - at - kHeadBytes < size) break;
      Handle(rest_[at], std::string_view(rest_).substr(at + kHeadBytes, size));
      at += kHeadBytes + size;
    }
    rest_.erase(0, at);
    return true;
  }

  void Handle(char type, std::string_view payload) {
    if (type == 'X') stop_problem_ = payload;
    if (type == 'X' || next_ == pages_.size()) return;
    PageText& page = *pages_[next_];
    switch (type) {
      case 'B':
        reading_ = true;
        begun_ = Clock::now();
        break;
      case 'T':
        page.quarter_turns = ValueOf<int>(payload);
        break;
      case 'L':
        page.pictures.push_back(TextIn(payload));
        break;
      case 'E':
        Finish({});
        break;
      default:
        Finish(std::string(payload));
        break;
    }
  }

  static PictureText TextIn(std::string_view payload) {
    auto const spot = ValueOf<Spot>(payload);
    return {std::string(payload.substr(std::min(payload.size(), sizeof(Spot)))), spot.place,
            spot.shown};
  }

  void Finish(std::string problem) {
    reading_ = false;
    PageText& page = *pages_[next_++];
    page.problem = std::move(problem);
    std::lock_guard const lock(run_.mutex);
    run_.done(page);
  }

  void FailUntil(size_t end, std::string const& problem) {
    while (next_ < end) {
      pages_[next_]->has_begun = false;
      Finish(problem);
    }
  }

  bool HasTimedOut() const {
    int const timeout = run_.options.timeout;
    return timeout > 0 && Clock::now() - begun_ >= std::chrono::seconds(timeout);
  }

  Run& run_;
  std::vector<PageText*> pages_;
  size_t next_ = 0;       // the page that is read, or will be
  size_t end_ = 0;        // of the pages that the process takes
  bool reading_ = false;  // it has begun
  Clock::time_point begun_;
  std::optional<std::string> stop_problem_;
  std::string rest_;
};

}  // namespace

std::vector<PageText> RecognizePages(ScannedPages const& scanned,
                                     std::vector<unsigned> const& pages, OcrOptions const& options,
                                     int jobs, PageTextSink const& done) {
  std::vector<PageText> texts(pages.size());
  size_t const count = std::min(static_cast<size_t>(std::max(jobs, 1)), pages.size());
  std::vector<std::vector<PageText*>> shares(count);
  for (size_t i = 0; i < pages.size(); ++i) {
    texts[i].page = pages[i];
    shares[i % count].push_back(&texts[i]);
  }
  Run run = {scanned, options, done, {}};
  RunSideBySide(count, [&](size_t i) { Job(run, std::move(shares[i]))(); });
  return texts;
}

bool CheckOcr(OcrOptions const& options, std::string& problem) {
  if (AskChild(kCheck.With(options), problem)) return true;
  problem = EngineProblem(problem, options);
  return false;
}

}  // namespace sorrelin::tool

// Writes the content of a text layer. Each word has a place of its own and is stretched to its box;
// a blank fills the gap to the next word of its line, so that viewers see words and lines however
// wide their gaps are.
//
// Viewers disagree on text that is read from the right. MuPDF takes letters in the order in which
// they are drawn; poppler and PDFium want them as they are seen from the left, and take them from
// /ActualText where there is one; Firefox turns letters around that are drawn next to each other in
// one size, but not those that overlap. So such words are drawn from right to left, with
// overlapping letters, blanks of another size, and an /ActualText as seen from the left (ISO
// 32000-1, 14.9.4).
#include "tools/ocr/layer_content.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QUtil.hh>
#include <utility>

#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

constexpr double kLetterWidth = 0.5;  // of the font's size
constexpr double kPercent = 100;
constexpr double kSizeSteps = 10;   // a point
constexpr double kLeastGap = 0.05;  // of the font's size, for a blank
constexpr double kMaxRise = 0.3;    // of the font's size, within a level part of a line
constexpr double kMaxLoose = 3;     // of the font's size, between letters that belong together
constexpr double kOverlap = 0.25;   // of the font's size, between letters drawn from the right
constexpr double kThousand = 1000;  // parts of an em, the unit of TJ
constexpr char kBlankCode[] = "0020";
constexpr size_t kCodeDigits = 4;

std::string Text(double value, int digits) { return QUtil::double_to_string(value, digits); }

std::string MatrixText(Matrix const& m) {
  return Text(m.a, 5) + " " + Text(m.b, 5) + " " + Text(m.c, 5) + " " + Text(m.d, 5) + " " +
         Text(m.e, 2) + " " + Text(m.f, 2);
}

// The frame in which a word is shown: the box's directions, in points.
Matrix FrameOf(Matrix const& box) {
  double const width = box.Width(), height = box.Height();
  return {box.a / width, box.b / width, box.c / height, box.d / height, box.e, box.f};
}

// The same with its first direction turned about, from the box's other end.
Matrix MirroredFrameOf(Matrix const& box) {
  Matrix const frame = FrameOf(box);
  return {0 - frame.a, 0 - frame.b, frame.c, frame.d, box.e + box.a, box.f + box.b};
}

// How far a word begins after the end of another, in the direction in which the other is read, in
// points.
double GapBetween(LayerWord const& word, LayerWord const& next) {
  Matrix const& box = word.box;
  double const width = box.Width();
  double const step = ((next.box.e - box.e) * box.a + (next.box.f - box.f) * box.b) / width;
  return word.from_right ? -step - next.box.Width() : step - width;
}

// Scripts that have no blanks between words: those of China and Japan.
bool IsWithoutBlanks(char16_t unit) {
  constexpr std::pair<char16_t, char16_t> kRanges[] = {
      {0x3000, 0x30FF}, {0x31F0, 0x31FF}, {0x3400, 0x4DBF}, {0x4E00, 0x9FFF},
      {0xD840, 0xD8BF}, {0xF900, 0xFAFF}, {0xFF00, 0xFFEF}};
  return std::any_of(std::begin(kRanges), std::end(kRanges), [unit](auto const& range) {
    return unit >= range.first && unit <= range.second;
  });
}

bool AreJoined(std::u16string const& text, std::u16string const& next) {
  bool const ends_in_pair = text.size() > 1 && text.back() >= 0xDC00 && text.back() <= 0xDFFF;
  return IsWithoutBlanks(ends_in_pair ? text[text.size() - 2] : text.back()) &&
         IsWithoutBlanks(next.front());
}

// How far a word's foot is above that of another, across its line, in points.
double RiseBetween(Matrix const& box, Matrix const& next) {
  return ((next.e - box.e) * box.c + (next.f - box.f) * box.d) / box.Height();
}

// Neighbours in a line whose feet differ by little get the same, because viewers begin a line where
// they change.
void ShareFeet(std::vector<LayerWord>& line) {
  for (size_t start = 0, end = 0; start < line.size(); start = end) {
    Matrix const first = line[start].box;
    double lowest = 0, highest = 0;
    for (end = start; end < line.size(); ++end) {
      double const rise = RiseBetween(first, line[end].box);
      double const low = std::min(lowest, rise), high = std::max(highest, rise);
      if (high - low > kMaxRise * first.Height()) break;
      lowest = low;
      highest = high;
    }
    for (size_t i = start; i < end; ++i) {
      Matrix& box = line[i].box;
      double const shift = (lowest + highest) / 2 - RiseBetween(first, box);
      box.e += shift * first.c / first.Height();
      box.f += shift * first.d / first.Height();
    }
  }
}

// Writes the words of a layer.
class Writer {
 public:
  explicit Writer(LayerStyle const& style) : style_(style) {}

  void Add(std::vector<LayerWord> const& line) {
    for (size_t i = 0; i < line.size(); ++i) {
      Add(line[i], i + 1 < line.size() ? &line[i + 1] : nullptr);
    }
  }

  std::string Take() { return "BT\n3 Tr\n" + text_ + "ET\n"; }

 private:
  void Add(LayerWord const& word, LayerWord const* next) {
    double const size = word.box.Height();
    double const gap = next != nullptr ? GapBetween(word, *next) : 0;
    if (word.from_right) return AddFromRight(word, next != nullptr ? gap : 0);
    bool const is_joined =
        next != nullptr && std::abs(gap) < kMaxLoose * size && AreJoined(word.text, next->text);
    text_ += MatrixText(FrameOf(word.box)) + " Tm\n";
    SetSize(size);
    double const to_next = word.box.Width() + gap;
    Show(style_.codes(word.text), is_joined && to_next > 0 ? to_next : word.box.Width());
    if (next != nullptr && !is_joined) Show(kBlankCode, std::max(gap, kLeastGap * size));
  }

  // With a blank where there is a gap to the next word.
  void AddFromRight(LayerWord const& word, double gap) {
    std::u16string const letters = SeenFromLeft(word.text);
    std::string const seen = Utf8(WideText(letters.begin(), letters.end()));
    text_ += "/Span <</ActualText " + QPDFObjectHandle::newUnicodeString(seen).unparse() +
             ">> BDC\n" + MatrixText(MirroredFrameOf(word.box)) + " Tm\n";
    SetSize(word.box.Height());
    double const width = word.box.Width();
    ShowOverlapping(style_.codes(word.text), width);
    text_ += "EMC\n";
    if (gap <= 0) return;
    SetSize(word.box.Height() + 1 / kSizeSteps);
    Show(kBlankCode, gap);
  }

  void ShowOverlapping(std::string const& codes, double width) {
    auto const letters = static_cast<double>(codes.size() / kCodeDigits);
    double const overlap = letters > 1 ? std::min(kOverlap * size_, width / 2) : 0;
    double const letter = (width - overlap) / letters + overlap;
    double const stretch = letter / (kLetterWidth * size_);
    std::string const back = Text(overlap * kThousand / (size_ * stretch), 1);
    text_ += Text(kPercent * stretch, 1) + " Tz [";
    for (size_t i = 0; i < codes.size(); i += kCodeDigits) {
      text_ += (i > 0 ? back : "") + "<" + codes.substr(i, kCodeDigits) + ">";
    }
    text_ += "] TJ\n";
  }

  void SetSize(double size) {
    size = std::max(std::round(size * kSizeSteps) / kSizeSteps, 1 / kSizeSteps);
    if (size == size_) return;
    text_ += style_.font + " " + Text(size, 2) + " Tf\n";
    size_ = size;
  }

  void Show(std::string const& codes, double width) {
    double const natural = static_cast<double>(codes.size() / kCodeDigits) * kLetterWidth * size_;
    text_ += Text(kPercent * width / natural, 1) + " Tz <" + codes + "> Tj\n";
  }

  LayerStyle const& style_;
  std::string text_;
  double size_ = 0;  // of the font in force
};

}  // namespace

Matrix LevelBox(Matrix const& box) {
  constexpr double kQuarter = std::numbers::pi / 2;
  constexpr double kMaxTilt = std::numbers::pi / 12;
  double const angle = std::atan2(box.b, box.a);
  double const level = std::round(angle / kQuarter) * kQuarter;
  if (angle == level || std::abs(angle - level) > kMaxTilt) return box;
  double const width = box.Width(), height = box.Height();
  Matrix turned = {width * std::round(std::cos(level)),
                   width * std::round(std::sin(level)),
                   -height * std::round(std::sin(level)),
                   height * std::round(std::cos(level)),
                   0,
                   0};
  turned.e = box.e + (box.a + box.c - turned.a - turned.c) / 2;
  turned.f = box.f + (box.b + box.d - turned.b - turned.d) / 2;
  return turned;
}

std::string LayerContent(std::vector<LayerWord> words, Matrix const& place,
                         LayerStyle const& style) {
  Writer writer(style);
  for (auto& line : LinesOf(std::move(words))) {
    for (LayerWord& word : line) word.box = LevelBox(word.box.Then(place));
    ShareFeet(line);
    writer.Add(line);
  }
  return writer.Take();
}

}  // namespace sorrelin::tool

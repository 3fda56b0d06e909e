// Reads the words of a rendered text layer. The renderer shows each word with a blank after it by
// one TJ, in an em of half the font's size a letter, stretched to the word's box. Words that are
// read from right to left are mirrored.
#include "tools/ocr/layer_words.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace sorrelin::tool {
namespace {

constexpr double kLetterWidth = 0.5;  // of the font's size
constexpr double kPercent = 100;
constexpr double kFoot = 0.2;  // of the font's size, below the baseline
constexpr char16_t kBlank = u' ';
constexpr size_t kMatrixNumbers = 6;

class WordReader : public QPDFObjectHandle::ParserCallbacks {
 public:
  void handleObject(QPDFObjectHandle object) override {
    if (!object.isOperator()) return operands_.push_back(object);
    std::string const name = object.getOperatorValue();
    if (name == "Tm" && operands_.size() == kMatrixNumbers) {
      line_ = {Number(0), Number(1), Number(2), Number(3), Number(4), Number(5)};
    } else if (name == "Td" && operands_.size() == 2) {
      line_ = Matrix{1, 0, 0, 1, Number(0), Number(1)}.Then(line_);
    } else if (name == "Tf" && operands_.size() == 2) {
      size_ = Number(1);
    } else if (name == "Tz" && operands_.size() == 1) {
      stretch_ = Number(0) / kPercent;
    } else if (name == "TJ" && operands_.size() == 1 && operands_[0].isArray()) {
      for (QPDFObjectHandle item : operands_[0].getArrayAsVector()) {
        if (item.isString()) Add(item.getStringValue());
      }
    }
    operands_.clear();
  }
  void handleEOF() override {}

  std::vector<LayerWord> words;

 private:
  double Number(size_t i) { return operands_[i].getNumericValue(); }

  void Add(std::string const& codes) {
    LayerWord word;
    for (size_t i = 0; i + 1 < codes.size(); i += 2) {
      word.text += static_cast<char16_t>(static_cast<unsigned char>(codes[i]) << 8 |
                                         static_cast<unsigned char>(codes[i + 1]));
    }
    double const length = static_cast<double>(word.text.size()) * kLetterWidth * size_ * stretch_;
    while (!word.text.empty() && word.text.back() == kBlank) word.text.pop_back();
    if (word.text.empty() || length <= 0 || size_ <= 0) return;
    word.from_right = line_.a * line_.d - line_.b * line_.c < 0;
    Matrix const along = word.from_right ? Matrix{-length, 0, 0, size_, length, -kFoot * size_}
                                         : Matrix{length, 0, 0, size_, 0, -kFoot * size_};
    word.box = along.Then(line_);
    words.push_back(std::move(word));
  }

  std::vector<QPDFObjectHandle> operands_;
  Matrix line_;
  double size_ = 0;
  double stretch_ = 1;
};

// How far a word's foot is above that of another, across its line, in heights of its box.
double Across(Matrix const& box, Matrix const& other) {
  double const x = other.e - box.e, y = other.f - box.f;
  return (x * box.c + y * box.d) / (box.c * box.c + box.d * box.d);
}

bool IsSameLine(Matrix const& box, Matrix const& next) {
  constexpr double kMaxShift = 0.5;
  constexpr double kMinCosine = 0.95;
  double const cosine = (box.a * next.a + box.b * next.b) / (box.Width() * next.Width());
  return cosine > kMinCosine && std::abs(Across(box, next)) < kMaxShift;
}

bool IsIn(char16_t letter, char16_t first, char16_t last) {
  return letter >= first && letter <= last;
}

// Whether a letter is seen from left to right in text of any direction.
bool IsForward(char16_t letter) {
  constexpr std::pair<char16_t, char16_t> kForward[] = {
      {u'0', u'9'},   {u'A', u'Z'},   {u'a', u'z'},    {0xC0, 0x58F},
      {0x660, 0x669}, {0x6F0, 0x6F9}, {0x900, 0x1FFF}, {0x3040, 0xD7FF}};
  return std::any_of(std::begin(kForward), std::end(kForward), [letter](auto const& range) {
    return IsIn(letter, range.first, range.second);
  });
}

bool IsPairEnd(char16_t unit) { return IsIn(unit, 0xDC00, 0xDFFF); }

}  // namespace

std::vector<LayerWord> WordsOfLayer(QPDFObjectHandle page) {
  WordReader reader;
  page.parsePageContents(&reader);
  return std::move(reader.words);
}

std::vector<std::vector<LayerWord>> LinesOf(std::vector<LayerWord> words) {
  std::vector<std::vector<LayerWord>> lines;
  for (LayerWord& word : words) {
    if (lines.empty() || !IsSameLine(lines.back().back().box, word.box)) lines.emplace_back();
    lines.back().push_back(std::move(word));
  }
  return lines;
}

std::u16string SeenFromLeft(std::u16string const& text) {
  std::u16string seen(text.rbegin(), text.rend());
  auto const turn = [&](size_t from, size_t to) {
    std::reverse(seen.begin() + static_cast<std::ptrdiff_t>(from),
                 seen.begin() + static_cast<std::ptrdiff_t>(to));
  };
  for (size_t i = 0; i + 1 < seen.size(); ++i) {
    if (!IsPairEnd(seen[i])) continue;
    turn(i, i + 2);
    ++i;
  }
  for (size_t start = 0; start < seen.size(); ++start) {
    if (!IsForward(seen[start])) continue;
    size_t end = start + 1;
    // A single mark between them belongs to them, as in 3.5.
    while (end < seen.size() &&
           (IsForward(seen[end]) ||
            (end + 1 < seen.size() && IsForward(seen[end + 1]) && seen[end] < 0x80))) {
      ++end;
    }
    turn(start, end);
    start = end;
  }
  return seen;
}

}  // namespace sorrelin::tool

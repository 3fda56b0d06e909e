// The scanner of page contents. libqpdf splits them into tokens; only operators that move or draw
// pictures count.
#include "tools/extract/page/content_scanner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFTokenizer.hh>
#include <set>

#include "tools/documents/stream_reader.h"

namespace sorrelin::tool {
namespace {

using Token = QPDFTokenizer::Token;

constexpr size_t kMaxContentBytes = size_t{4} << 20;
constexpr int kMaxContents = 256;       // streams of a page
constexpr size_t kMaxPictures = 10000;  // of a page
constexpr size_t kMaxSaved = 512;       // states; pages save a few
constexpr int kMaxForms = 16;           // one inside the other
constexpr size_t kOperands = 6;         // of "cm"
constexpr uint64_t kScanBytes = 1024;   // what a form costs beside its bytes

// 0 for what is no number.
double NumberOf(Token const& token) {
  if (token.getType() != QPDFTokenizer::tt_integer && token.getType() != QPDFTokenizer::tt_real) {
    return 0;
  }
  std::string_view text = token.getValue();
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return std::isfinite(number) ? number : 0;
}

Matrix MatrixOf(QPDFObjectHandle array) {
  if (!array.isMatrix()) return {};
  auto const m = array.getArrayAsMatrix();
  return {m.a, m.b, m.c, m.d, m.e, m.f};
}

std::string FullKey(std::string const& key) {
  constexpr std::pair<char const*, char const*> kKeys[] = {
      {"/BPC", "/BitsPerComponent"}, {"/CS", "/ColorSpace"}, {"/D", "/Decode"},
      {"/DP", "/DecodeParms"},       {"/F", "/Filter"},      {"/H", "/Height"},
      {"/IM", "/ImageMask"},         {"/W", "/Width"}};
  for (auto const& [abbreviation, full] : kKeys) {
    if (key == abbreviation) return full;
  }
  return key;
}

QPDFObjectHandle FullSpace(QPDFObjectHandle space) {
  constexpr std::pair<char const*, char const*> kSpaces[] = {
      {"/G", "/DeviceGray"}, {"/RGB", "/DeviceRGB"}, {"/CMYK", "/DeviceCMYK"}, {"/I", "/Indexed"}};
  if (space.isArray()) {
    std::vector<QPDFObjectHandle> items = space.getArrayAsVector();
    for (QPDFObjectHandle& item : items) item = FullSpace(item);
    return QPDFObjectHandle::newArray(items);
  }
  for (auto const& [abbreviation, full] : kSpaces) {
    if (space.isNameAndEquals(abbreviation)) return QPDFObjectHandle::newName(full);
  }
  return space;
}

// Draws one content after the other into one list.
class Scanner {
 public:
  Scanner(QpdfDocument& document, PageDrawing& drawing) : document_(document), drawing_(drawing) {}

  void ScanPageContent(QPDFObjectHandle page, QPDFObjectHandle resources) {
    QPDFObjectHandle contents = page.getKey("/Contents");
    std::string text;
    if (contents.isStream()) Append(contents, text);
    int const count = contents.isArray() ? std::min(contents.getArrayNItems(), kMaxContents) : 0;
    for (int i = 0; i < count; ++i) Append(contents.getArrayItem(i), text);
    Scan(text, resources, Matrix{}, 0);
  }

 private:
  struct State {
    std::string const& text;
    QPDFObjectHandle resources;
    int depth;
    Matrix matrix;
    std::vector<Matrix> saved;
    std::array<double, kOperands> operands{};  // values of the last tokens, a ring
    size_t tokens = 0;
    Token last;
    size_t inline_begin = 0;
  };

  void Append(QPDFObjectHandle stream, std::string& text) {
    if (!stream.isStream() || text.size() >= kMaxContentBytes) return;
    auto const part = StreamText(stream, kMaxContentBytes - text.size());
    if (part) {
      text += *part + "\n";
    } else {
      drawing_.is_readable = false;
    }
  }

  void Scan(std::string const& text, QPDFObjectHandle resources, Matrix const& matrix, int depth) {
    document_.budget().Spend(kScanBytes + text.size());
    auto const input = std::make_shared<BufferInputSource>("content", text);
    QPDFTokenizer tokenizer;
    tokenizer.allowEOF();
    State state{text, resources, depth, matrix, {}, {}, 0, {}, 0};
    for (;;) {
      Token const token = tokenizer.readToken(input, "content", true);
      if (token.getType() == QPDFTokenizer::tt_eof) return;
      size_t const at = static_cast<size_t>(input->tell());
      if (token.isWord("BI")) state.inline_begin = at;
      if (token.isWord("ID")) {
        DrawInline(state, at, tokenizer, input);
        continue;
      }
      Take(token, state);
    }
  }

  void Take(Token const& token, State& state) {
    if (token.isWord()) {
      std::string const& word = token.getValue();
      if (word == "cm") Concatenate(state);
      if (word == "q" && state.saved.size() < kMaxSaved) state.saved.push_back(state.matrix);
      if (word == "Q" && !state.saved.empty()) {
        state.matrix = state.saved.back();
        state.saved.pop_back();
      }
      if (word == "Do" && state.last.getType() == QPDFTokenizer::tt_name) {
        Draw(state.last.getValue(), state);
      }
    }
    state.operands[state.tokens++ % kOperands] = NumberOf(token);
    state.last = token;
  }

  static void Concatenate(State& state) {
    auto const operand = [&](size_t i) { return state.operands[(state.tokens + i) % kOperands]; };
    Matrix const added = {operand(0), operand(1), operand(2), operand(3), operand(4), operand(5)};
    state.matrix = added.Then(state.matrix);
  }

  void Draw(std::string const& name, State const& state) {
    QPDFObjectHandle resources = state.resources;
    QPDFObjectHandle object = resources.getKeyIfDict("/XObject").getKeyIfDict(name);
    if (!object.isStream()) return;
    QPDFObjectHandle subtype = object.getDict().getKey("/Subtype");
    if (subtype.isNameAndEquals("/Image")) {
      Add({object, resources, state.matrix, false});
    } else if (subtype.isNameAndEquals("/Form")) {
      DrawForm(object, state);
    }
  }

  void DrawForm(QPDFObjectHandle form, State const& state) {
    QPDFObjGen const number = form.getObjGen();
    if (state.depth == kMaxForms || document_.budget().IsExhausted()) return;
    // A form that is being drawn does not draw itself.
    if (!drawn_forms_.insert(number).second) return;
    auto const text = StreamText(form, kMaxContentBytes);
    if (!text) drawing_.is_readable = false;
    QPDFObjectHandle dictionary = form.getDict();
    QPDFObjectHandle own = dictionary.getKey("/Resources");
    Matrix const matrix = MatrixOf(dictionary.getKey("/Matrix")).Then(state.matrix);
    if (text) Scan(*text, own.isDictionary() ? own : state.resources, matrix, state.depth + 1);
    drawn_forms_.erase(number);
  }

  void DrawInline(State& state, size_t at, QPDFTokenizer& tokenizer,
                  std::shared_ptr<InputSource> const& input) {
    // One blank separates ID from the data.
    char blank = 0;
    input->read(&blank, 1);
    tokenizer.expectInlineImage(input);
    Token const data = tokenizer.readToken(input, "content", true);
    size_t const begin = state.inline_begin;
    if (data.getType() != QPDFTokenizer::tt_inline_image || begin == 0 || at < begin + 2) return;
    std::string const keys = state.text.substr(begin, at - begin - 2);
    QPDFObjectHandle image = QPDFObjectHandle::newStream(&document_.qpdf(), data.getValue());
    QPDFObjectHandle given = QPDFObjectHandle::parse("<<" + keys + ">>");
    QPDFObjectHandle dictionary = image.getDict();
    for (auto& [key, value] : given.getDictAsMap()) {
      std::string const full = FullKey(key);
      dictionary.replaceKey(full, full == "/ColorSpace" ? FullSpace(value) : value);
    }
    Add({image, state.resources, state.matrix, true});
  }

  void Add(DrawnPicture const& picture) {
    if (drawing_.pictures.size() < kMaxPictures) drawing_.pictures.push_back(picture);
  }

  QpdfDocument& document_;
  PageDrawing& drawing_;
  std::set<QPDFObjGen> drawn_forms_;  // one inside the other
};

}  // namespace

PageDrawing ScanPage(QpdfDocument& document, QPDFObjectHandle page) {
  PageDrawing drawing;
  QPDFPageObjectHelper helper(page);
  QPDFObjectHandle resources = helper.getAttribute("/Resources", false);
  Scanner(document, drawing).ScanPageContent(page, resources);
  return drawing;
}

}  // namespace sorrelin::tool

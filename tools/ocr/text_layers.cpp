// A layer is the first of a page's content streams: no matrix of the page is in force there, and
// what the page draws covers it. Its dictionary has a key of its own, so that the program knows it
// again. All layers of a run share one font.
#include "tools/ocr/text_layers.h"

#include <algorithm>
#include <memory>
#include <qpdf/Buffer.hh>
#include <qpdf/Pl_Buffer.hh>
#include <qpdf/Pl_Flate.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <sstream>

#include "tools/cli/messages.h"
#include "tools/documents/child_function.h"
#include "tools/ocr/changeable_document.h"
#include "tools/ocr/layer_content.h"
#include "tools/ocr/layer_font.h"
#include "tools/ocr/layer_words.h"

namespace sorrelin::tool {
namespace {

constexpr char kLayerKey[] = "/SorrelinText";    // of a layer's dictionary
constexpr char kFontPrefix[] = "/SorrelinFont";  // of its font's name
constexpr int kQuarter = 90;

// Notes whether a content shows text.
class TextFinder : public QPDFObjectHandle::ParserCallbacks {
 public:
  void handleObject(QPDFObjectHandle object) override {
    if (!object.isOperator()) return;
    std::string const word = object.getOperatorValue();
    if (word == "Tj" || word == "TJ" || word == "'" || word == "\"") found_ = true;
    if (found_) terminateParsing();
  }
  void handleEOF() override {}
  bool found() const { return found_; }

 private:
  bool found_ = false;
};

bool IsLayer(QPDFObjectHandle stream) {
  return stream.isStream() && stream.getDict().hasKey(kLayerKey);
}

// The content streams of a page, with or without those that are layers of the program.
std::vector<QPDFObjectHandle> Contents(QPDFObjectHandle page, bool with_layers) {
  std::vector<QPDFObjectHandle> streams;
  for (QPDFObjectHandle const& stream : page.getPageContents()) {
    if (with_layers || !IsLayer(stream)) streams.push_back(stream);
  }
  return streams;
}

bool ShowsText(QPDFObjectHandle page) {
  TextFinder finder;
  QPDFObjectHandle::parseContentStream(QPDFObjectHandle::newArray(Contents(page, false)), &finder);
  QPDFPageObjectHelper(page).forEachFormXObject(
      true, [&](QPDFObjectHandle& form, QPDFObjectHandle&, std::string const&) {
        if (!finder.found()) QPDFObjectHandle::parseContentStream(form, &finder);
      });
  return finder.found();
}

bool HasLayer(QPDFObjectHandle page) {
  auto const streams = Contents(page, true);
  return std::any_of(streams.begin(), streams.end(), IsLayer);
}

std::string ListOf(std::vector<unsigned> const& pages) {
  std::ostringstream list;
  list << pages.size();
  for (unsigned const page : pages) list << ' ' << page;
  return list.str();
}

std::vector<unsigned> ReadList(std::istream& stream) {
  size_t count = 0;
  stream >> count;
  std::vector<unsigned> pages;
  for (unsigned page = 0; pages.size() < count && stream >> page;) pages.push_back(page);
  return pages;
}

std::optional<std::string> SurveyHere(std::string const& name, std::string& problem) {
  auto const document = ChangeableDocument::Open(name, problem);
  if (document == nullptr) return std::nullopt;
  TextSurvey survey;
  survey.pages = document->PageCount();
  auto const look = [&] {
    for (unsigned i = 0; i < survey.pages; ++i) {
      QPDFObjectHandle const page = document->Page(i);
      if (ShowsText(page)) survey.with_text.push_back(i);
      if (HasLayer(page)) survey.with_layer.push_back(i);
    }
  };
  if (!CatchDamage(look, problem)) return std::nullopt;
  return std::to_string(survey.pages) + " " + ListOf(survey.with_text) + " " +
         ListOf(survey.with_layer);
}

std::string Deflated(std::string const& text) {
  Pl_Buffer buffer("deflated");
  Pl_Flate flate("text", &buffer, Pl_Flate::a_deflate);
  flate.writeString(text);
  flate.finish();
  auto const bytes = buffer.getBufferSharedPointer();
  return {reinterpret_cast<char const*>(bytes->getBuffer()), bytes->getSize()};
}

// Lays the layers of one run.
class Layering {
 public:
  explicit Layering(QPDF& document) : document_(document), font_(document) {}

  void Lay(QPDFObjectHandle page, PageText const& text) {
    std::vector<QPDFObjectHandle> contents;
    for (PictureText const& layer : text.pictures) contents.push_back(StreamOf(page, layer));
    auto const others = Contents(page, false);
    contents.insert(contents.end(), others.begin(), others.end());
    page.replaceKey("/Contents",
                    contents.size() == 1 ? contents.front() : QPDFObjectHandle::newArray(contents));
    if (text.quarter_turns != 0) {
      QPDFPageObjectHelper(page).rotatePage(text.quarter_turns * kQuarter, true);
    }
  }

  // After the last page.
  void Finish() { font_.Finish(); }

 private:
  QPDFObjectHandle StreamOf(QPDFObjectHandle page, PictureText const& layer) {
    QPDF rendered;
    rendered.setSuppressWarnings(true);
    rendered.processMemoryFile("text layer", layer.data.data(), layer.data.size());
    QPDFObjectHandle rendered_page = rendered.getAllPages().at(0);
    auto const box = QPDFPageObjectHelper(rendered_page).getMediaBox().getArrayAsRectangle();
    Matrix const unit = {1 / box.urx, 0, 0, 1 / box.ury, 0, 0};
    LayerStyle const style = {FontName(page, font_.Copy(rendered, rendered_page)),
                              [this](std::u16string const& text) { return font_.CodesOf(text); }};
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&document_);
    stream.replaceStreamData(
        Deflated(LayerContent(WordsOfLayer(rendered_page), unit.Then(layer.place), style)),
        QPDFObjectHandle::newName("/FlateDecode"), QPDFObjectHandle::newNull());
    stream.getDict().replaceKey(kLayerKey, QPDFObjectHandle::newBool(true));
    return stream;
  }

  // The name that the page has for the font.
  static std::string FontName(QPDFObjectHandle page, QPDFObjectHandle font) {
    QPDFObjectHandle resources = QPDFPageObjectHelper(page).getAttribute("/Resources", true);
    if (!resources.isDictionary()) {
      resources = page.replaceKeyAndGetNew("/Resources", QPDFObjectHandle::newDictionary());
    }
    QPDFObjectHandle fonts = resources.getKey("/Font");
    fonts = fonts.isDictionary() ? fonts.shallowCopy() : QPDFObjectHandle::newDictionary();
    resources.replaceKey("/Font", fonts);
    for (std::string const& name : fonts.getKeys()) {
      if (fonts.getKey(name).getObjGen() == font.getObjGen()) return name;
    }
    int number = 0;
    std::string const name = resources.getUniqueResourceName(kFontPrefix, number);
    fonts.replaceKey(name, font);
    return name;
  }

  QPDF& document_;
  LayerFont font_;
};

void Write(QPDF& document, std::string const& to) {
  bool const linearized = document.isLinearized();
  QPDFWriter writer(document, to.c_str());
  writer.setStreamDataMode(qpdf_s_preserve);
  writer.setLinearization(linearized);
  writer.setDeterministicID(true);
  writer.write();
}

bool HasPages(std::string const& name, size_t pages, std::string& problem) {
  auto const document = ChangeableDocument::Open(name, problem);
  if (document == nullptr) return false;
  problem = "has lost pages";
  return document->PageCount() == pages && !document->qpdf().anyWarnings();
}

std::optional<std::string> LayHere(std::string const& from, std::string const& to,
                                   std::vector<PageText> const& texts, std::string& problem) {
  auto const document = ChangeableDocument::Open(from, problem);
  if (document == nullptr) return std::nullopt;
  auto const lay = [&] {
    Layering layering(document->qpdf());
    for (PageText const& text : texts) {
      bool const changes = !text.pictures.empty() || text.quarter_turns != 0;
      if (changes) layering.Lay(document->Page(text.page), text);
    }
    layering.Finish();
    Write(document->qpdf(), to);
  };
  bool const written = CatchDamage(lay, problem) && HasPages(to, document->PageCount(), problem);
  if (written) return "";
  problem = "its copy with text cannot be written: it " + problem + kRoomRemedy;
  return std::nullopt;
}

ChildFunction<std::string> const kSurvey("survey text", SurveyHere);
ChildFunction<std::string, std::string, std::vector<PageText>> const kLay("lay text", LayHere);

}  // namespace

std::optional<TextSurvey> SurveyText(std::string const& name, std::string& problem) {
  auto const answer = AskChild(kSurvey.With(name), problem);
  if (!answer) return std::nullopt;
  std::istringstream stream(*answer);
  TextSurvey survey;
  stream >> survey.pages;
  survey.with_text = ReadList(stream);
  survey.with_layer = ReadList(stream);
  return survey;
}

bool LayTexts(std::filesystem::path const& from, std::filesystem::path const& to,
              std::vector<PageText> const& texts, std::string& problem) {
  return AskChild(kLay.With(from.string(), to.string(), texts), problem).has_value();
}

}  // namespace sorrelin::tool

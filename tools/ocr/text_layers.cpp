// A layer is the first of a page's content streams: no matrix of the page is in force there, and
// what the page draws covers it. Its dictionary has a key of its own, so that the program knows it
// again. All layers of a run share one font.
#include "tools/ocr/text_layers.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <qpdf/Buffer.hh>
#include <qpdf/Pl_Buffer.hh>
#include <qpdf/Pl_Flate.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <sstream>
#include <string_view>

#include "tools/cli/messages.h"
#include "tools/documents/child.h"
#include "tools/ocr/changeable_document.h"

namespace sorrelin::tool {
namespace {

constexpr char kLayerKey[] = "/SorrelinText";    // of a layer's dictionary
constexpr char kFontPrefix[] = "/SorrelinFont";  // of its font's name
constexpr char kRendererFont[] = "/f-0-0 ";      // as the renderer names it
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

std::string OperatorOf(Matrix const& m) {
  char text[256];
  std::snprintf(text, sizeof text, "%.8f %.8f %.8f %.8f %.5f %.5f cm\n", m.a, m.b, m.c, m.d, m.e,
                m.f);
  return text;
}

std::string Renamed(std::string text, std::string const& font) {
  std::string const to = font + " ";
  for (size_t at = 0; (at = text.find(kRendererFont, at)) != std::string::npos; at += to.size()) {
    text.replace(at, std::string_view(kRendererFont).size(), to);
  }
  return text;
}

// Gives each word the width of its box. The renderer stretches a word with the blank after it to
// the box, so that its letters end too early; the next word has a place of its own.
std::string Widened(std::string const& text) {
  constexpr std::string_view kStretch = " Tz [ <";
  constexpr std::string_view kBlankCode = "0020";
  constexpr size_t kCodeDigits = 4;
  std::string widened;
  size_t done = 0;
  for (size_t at = 0; (at = text.find(kStretch, at)) != std::string::npos; ++at) {
    size_t const number = text.rfind(' ', at - 1) + 1;
    size_t const codes = at + kStretch.size();
    size_t const end = std::min(text.find('>', codes), text.size());
    size_t const count = (end - codes) / kCodeDigits;
    if (number < done || count < 2 || text.substr(end - kCodeDigits, kCodeDigits) != kBlankCode) {
      continue;
    }
    double const stretch = std::strtod(text.c_str() + number, nullptr);
    char value[32];
    std::snprintf(value, sizeof value, "%.3f",
                  stretch * static_cast<double>(count) / static_cast<double>(count - 1));
    widened.append(text, done, number - done).append(value);
    done = at;
  }
  return widened.append(text, done);
}

// Lays the layers of one run.
class Layering {
 public:
  explicit Layering(QPDF& document) : document_(document) {}

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

 private:
  QPDFObjectHandle StreamOf(QPDFObjectHandle page, PictureText const& layer) {
    QPDF rendered;
    rendered.setSuppressWarnings(true);
    rendered.processMemoryFile("text layer", layer.data.data(), layer.data.size());
    QPDFObjectHandle rendered_page = rendered.getAllPages().at(0);
    auto const box = QPDFPageObjectHelper(rendered_page).getMediaBox().getArrayAsRectangle();
    Pl_Buffer text("text");
    rendered_page.pipePageContents(&text);
    Matrix const unit = {1 / box.urx, 0, 0, 1 / box.ury, 0, 0};
    auto const bytes = text.getBufferSharedPointer();
    std::string content(reinterpret_cast<char const*>(bytes->getBuffer()), bytes->getSize());
    content = Renamed(Widened(content), FontName(page, rendered, rendered_page));
    content = "q\n" + OperatorOf(unit.Then(layer.place)) + content + "Q\n";
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&document_);
    stream.replaceStreamData(Deflated(content), QPDFObjectHandle::newName("/FlateDecode"),
                             QPDFObjectHandle::newNull());
    stream.getDict().replaceKey(kLayerKey, QPDFObjectHandle::newBool(true));
    return stream;
  }

  // The name that the page has for the font of all layers.
  std::string FontName(QPDFObjectHandle page, QPDF& rendered, QPDFObjectHandle rendered_page) {
    if (!font_.isInitialized()) {
      rendered.setImmediateCopyFrom(true);
      QPDFObjectHandle fonts = rendered_page.getKey("/Resources").getKey("/Font");
      font_ = document_.copyForeignObject(fonts.getKey("/f-0-0"));
    }
    QPDFObjectHandle resources = QPDFPageObjectHelper(page).getAttribute("/Resources", true);
    if (!resources.isDictionary()) {
      resources = page.replaceKeyAndGetNew("/Resources", QPDFObjectHandle::newDictionary());
    }
    QPDFObjectHandle fonts = resources.getKey("/Font");
    fonts = fonts.isDictionary() ? fonts.shallowCopy() : QPDFObjectHandle::newDictionary();
    resources.replaceKey("/Font", fonts);
    for (std::string const& name : fonts.getKeys()) {
      if (fonts.getKey(name).getObjGen() == font_.getObjGen()) return name;
    }
    int number = 0;
    std::string const name = resources.getUniqueResourceName(kFontPrefix, number);
    fonts.replaceKey(name, font_);
    return name;
  }

  QPDF& document_;
  QPDFObjectHandle font_;
};

void Write(QPDF& document, std::filesystem::path const& to) {
  bool const linearized = document.isLinearized();
  QPDFWriter writer(document, to.c_str());
  writer.setStreamDataMode(qpdf_s_preserve);
  writer.setLinearization(linearized);
  writer.setDeterministicID(true);
  writer.write();
}

bool HasPages(std::filesystem::path const& name, size_t pages, std::string& problem) {
  auto const document = ChangeableDocument::Open(name.string(), problem);
  if (document == nullptr) return false;
  problem = "has lost pages";
  return document->PageCount() == pages && !document->qpdf().anyWarnings();
}

std::optional<std::string> LayHere(std::filesystem::path const& from,
                                   std::filesystem::path const& to,
                                   std::vector<PageText> const& texts, std::string& problem) {
  auto const document = ChangeableDocument::Open(from.string(), problem);
  if (document == nullptr) return std::nullopt;
  auto const lay = [&] {
    Layering layering(document->qpdf());
    for (PageText const& text : texts) {
      bool const changes = !text.pictures.empty() || text.quarter_turns != 0;
      if (changes) layering.Lay(document->Page(text.page), text);
    }
    Write(document->qpdf(), to);
  };
  bool const written = CatchDamage(lay, problem) && HasPages(to, document->PageCount(), problem);
  if (written) return "";
  problem = "its copy with text cannot be written: it " + problem + kRoomRemedy;
  return std::nullopt;
}

}  // namespace

std::optional<TextSurvey> SurveyText(std::string const& name, std::string& problem) {
  auto const answer =
      AskChild([&](std::string& reason) { return SurveyHere(name, reason); }, problem);
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
  return AskChild([&](std::string& reason) { return LayHere(from, to, texts, reason); }, problem)
      .has_value();
}

}  // namespace sorrelin::tool

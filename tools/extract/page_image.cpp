// From the page to its one picture, and through the picture's dictionary.
#include "tools/extract/page_image.h"

#include <sorrelin/syntax/page_flip.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "tools/documents/page_content.h"
#include "tools/documents/stream_filters.h"

namespace sorrelin::tool {
namespace {

using Kind = PdfValue::Kind;

constexpr int kMaxAncestors = 32;
constexpr size_t kMaxKnownAncestors = 1024;
constexpr size_t kMaxContentBytes = size_t{1} << 20;
constexpr size_t kMaxContents = 256;  // streams of a page
constexpr double kPointsPerInch = 72;
constexpr double kMaxSide = 0x7FFFFFFF;
constexpr char kTooMuchWork[] = "is left out: the document takes too much work to read";

// What draws the page; nothing if part of it cannot be read.
std::optional<std::string> ContentOf(PdfObjects const& objects, PdfValue const& page) {
  PdfObject const first = objects.Follow(page["Contents"]);
  if (first.is_stream) return DecodedText(objects, first, kMaxContentBytes);
  std::string content;
  for (size_t i = 0; i < std::min(first.value.items.size(), kMaxContents); ++i) {
    auto const part = DecodedText(objects, objects.Follow(first.value.items[i]),
                                  kMaxContentBytes - content.size());
    if (!part) return std::nullopt;
    content += *part + "\n";
    if (content.size() >= kMaxContentBytes) break;
  }
  return content;
}

bool ShowsFlipped(std::string const& content) {
  PageFlipTest test;
  test.Feed({reinterpret_cast<BYTE const*>(content.data()), content.size()});
  return test.Finish() != 0;
}

using Drawn = std::map<std::string, DrawnSize>;

struct NamedImage {
  std::string name;
  PdfObject object;
};

// The images among the page's XObjects; of a great many, two.
std::vector<NamedImage> ImagesOf(PdfObjects const& objects, PdfValue const& xobjects,
                                 Drawn const* drawn) {
  std::vector<NamedImage> images;
  for (size_t i = 0; i < xobjects.keys.size() && images.size() < 2; ++i) {
    if (drawn != nullptr && !drawn->contains(xobjects.keys[i])) continue;
    PdfObject object = objects.Follow(xobjects.items[i]);
    if (!objects.Resolve(object.value["Subtype"]).IsName("Image")) continue;
    images.push_back({xobjects.keys[i], std::move(object)});
  }
  return images;
}

// The page's only picture. Resources may list pictures of other pages: what the page draws counts.
NamedImage FindPicture(PdfObjects const& objects, PdfValue const& resources, Drawn const* drawn,
                       std::string& problem) {
  PdfValue const xobjects = objects.Resolve(resources["XObject"]);
  auto images = ImagesOf(objects, xobjects, nullptr);
  if (images.size() > 1 && drawn != nullptr) images = ImagesOf(objects, xobjects, drawn);
  if (images.size() == 1) return std::move(images[0]);
  problem = images.empty() ? "has no picture of its own" : "is made of several pictures";
  return {};
}

// Takes one picture's dictionary apart.
class Picture {
 public:
  Picture(PdfObjects const& objects, PdfObject const& object, DrawnSize drawn, PageFacts& facts,
          PageImage& image)
      : objects_(objects), object_(object), drawn_(drawn), facts_(facts), image_(image) {}

  void Judge() {
    ReadSize();
    ReadBits();
    auto const filters = FiltersOf(objects_, object_.value);
    if (filters) NameCompression(*filters);
    ReadSpace();
    Refuse(!filters, "its filters cannot be read");
    if (filters) ReadCoding(*filters);
    ReadMasks();
    ReadDecode();
    ReadData();
  }

 private:
  PdfValue Value(char const* key) const { return objects_.Resolve(object_.value[key]); }

  // The first reason stands.
  void Refuse(bool condition, std::string const& problem) {
    if (condition && facts_.problem.empty()) facts_.problem = problem;
  }

  DWORD SideOf(char const* key) const {
    PdfValue const side = Value(key);
    bool const sane = side.Is(Kind::kNumber) && side.number >= 1 && side.number <= kMaxSide;
    return sane ? static_cast<DWORD>(side.number) : 0;
  }

  static int DotsOver(DWORD pixels, double points) {
    return points > 0 ? WholeDots(pixels * kPointsPerInch / points) : 0;
  }

  void ReadSize() {
    image_.width = facts_.pixel_width = SideOf("Width");
    image_.height = facts_.pixel_height = SideOf("Height");
    Refuse(image_.width == 0 || image_.height == 0, "its picture has no size");
    facts_.dpi = {DotsOver(image_.width, drawn_.width), DotsOver(image_.height, drawn_.height)};
  }

  bool IsMask() const { return Value("ImageMask").number == 1; }

  void ReadBits() {
    double const bits = IsMask() ? 1 : Value("BitsPerComponent").number;
    bool const known = bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
    image_.bits = known ? static_cast<int>(bits) : 0;
  }

  void ReadSpace() {
    std::string problem;
    std::optional<ColourSpace> space = ColourSpace{};
    if (!IsMask()) space = ReadColourSpace(objects_, object_.value["ColorSpace"], problem);
    if (space) image_.space = *space;
    if (space) facts_.depth = image_.BitsPerPixel();
    Refuse(!space, problem);
    Refuse(image_.bits == 0, "its depth cannot be read");
    Refuse(image_.bits == 16 || (image_.space.components == 3 && image_.bits != 8),
           "its depth of " + std::to_string(facts_.depth) + " bits is not read");
  }

  void NameCompression(std::vector<StreamFilter> const& filters) {
    for (StreamFilter const& filter : filters) {
      if (!facts_.compression.empty()) facts_.compression += "+";
      facts_.compression += filter.name;
    }
    if (filters.empty()) facts_.compression = "none";
  }

  void SetCoding(ImageCoding coding, char const* name) {
    image_.coding = coding;
    facts_.compression = name;
  }

  void ReadCoding(std::vector<StreamFilter> const& filters) {
    if (filters.empty()) return;
    Refuse(filters.size() > 1,
           "its data went through several filters (" + facts_.compression + ")");
    if (filters.size() > 1) return;
    StreamFilter const& filter = filters.front();
    if (filter.name == "FlateDecode") {
      SetCoding(ImageCoding::kFlate, "flate");
      ReadPredictor(filter);
    } else if (filter.name == "RunLengthDecode") {
      SetCoding(ImageCoding::kRunLength, "runlength");
    } else if (filter.name == "DCTDecode") {
      ReadJpegParms(filter);
    } else if (filter.name == "CCITTFaxDecode") {
      ReadCcittParms(filter);
    } else {
      Refuse(true, "its data are coded in a way that is not read (" + filter.name + ")");
    }
  }

  double Parameter(StreamFilter const& filter, char const* key, double otherwise) const {
    PdfValue const value = objects_.Resolve(filter.parms[key]);
    return value.Is(Kind::kNull) ? otherwise : value.number;
  }

  void ReadPredictor(StreamFilter const& filter) {
    if (!HasPredictor(objects_, filter)) return;
    image_.predicted = true;
    Refuse(Parameter(filter, "Predictor", 1) < 10,
           "its data went through a predictor that is not undone");
    bool const fits = Parameter(filter, "Colors", 1) == image_.space.components &&
                      Parameter(filter, "BitsPerComponent", 8) == image_.bits &&
                      Parameter(filter, "Columns", 1) == image_.width;
    Refuse(!fits, "its data went through a predictor of another shape");
  }

  void ReadJpegParms(StreamFilter const& filter) {
    SetCoding(ImageCoding::kJpeg, "jpeg");
    Refuse(filter.parms.Is(Kind::kDictionary) && Parameter(filter, "ColorTransform", 1) != 1,
           "its JPEG data are of colours that are not read");
    Refuse(image_.bits != 8, "its JPEG data do not fit its depth");
  }

  void ReadCcittParms(StreamFilter const& filter) {
    bool const group_4 = Parameter(filter, "K", 0) < 0;
    SetCoding(ImageCoding::kGroup4, group_4 ? "g4" : "g3");
    image_.black_is_1 = Parameter(filter, "BlackIs1", 0) == 1;
    Refuse(!group_4, "its data are coded with Group 3, which is not read");
    Refuse(image_.BitsPerPixel() != 1, "its Group 4 data do not fit its depth");
    Refuse(Parameter(filter, "Columns", 1728) != image_.width,
           "its Group 4 data are not as wide as the picture");
    Refuse(Parameter(filter, "EncodedByteAlign", 0) == 1,
           "its Group 4 data are aligned to bytes, which is not read");
  }

  void ReadMasks() {
    Refuse(object_.value["SMask"].Is(Kind::kReference) || Value("SMask").Is(Kind::kDictionary),
           "its picture has a soft mask, which is not read");
    Refuse(!Value("Mask").Is(Kind::kNull), "its picture has a mask, which is not read");
  }

  // The ends of the range that samples stand for; of three components, only the usual one is read.
  void ReadDecode() {
    if (!facts_.problem.empty()) return;
    bool const indexed = !image_.space.palette.empty();
    double const top = (1 << image_.bits) - 1;
    double low = 0, high = indexed ? top : 1;
    PdfValue const decode = Value("Decode");
    std::vector<double> ends;
    for (PdfValue const& end : decode.items) ends.push_back(objects_.Resolve(end).number);
    if (image_.space.components == 3) {
      Refuse(!ends.empty() && ends != std::vector<double>{0, 1, 0, 1, 0, 1},
             "its /Decode array is not read");
      return;
    }
    if (ends.size() >= 2) {
      low = ends[0];
      high = ends[1];
    }
    for (int i = 0; i <= top; ++i) {
      double const value = low + i * (high - low) / top;
      image_.colours.push_back(indexed ? Entry(value) : Tone(value));
    }
  }

  RGBQUAD Entry(double index) const {
    double const last = static_cast<double>(image_.space.palette.size() - 1);
    double const inside = index > 0 ? std::min(index, last) : 0;
    return image_.space.palette[static_cast<size_t>(std::lround(inside))];
  }

  static RGBQUAD Tone(double share) {
    double const inside = share > 0 ? std::min(share, 1.0) : 0;
    BYTE const tone = static_cast<BYTE>(std::lround(inside * 255));
    return {tone, tone, tone, 0};
  }

  void ReadData() {
    auto const data = objects_.DataOf(object_);
    Refuse(!data, "its picture's data are not all there");
    Refuse(data && data->empty(), "its picture has no data");
    if (data) image_.data = *data;
  }

  PdfObjects const& objects_;
  PdfObject const& object_;
  DrawnSize drawn_;
  PageFacts& facts_;
  PageImage& image_;
};

}  // namespace

// A node above a page, or a null value.
PdfValue const& PageJudge::Ancestor(PdfValue const& reference) {
  static PdfValue const kNone;
  if (!reference.Is(Kind::kReference)) return kNone;
  DWORD const number = static_cast<DWORD>(reference.number);
  auto const known = ancestors_.find(number);
  if (known != ancestors_.end()) return known->second;
  if (ancestors_.size() == kMaxKnownAncestors) ancestors_.clear();
  PdfValue node = objects_.Resolve(reference);
  node.Remove("Kids");
  return ancestors_[number] = std::move(node);
}

// What a page has, or else the nearest of its ancestors.
PdfValue PageJudge::Inherited(PdfValue const& page, char const* key) {
  PdfValue const* node = &page;
  for (int i = 0; i < kMaxAncestors; ++i) {
    PdfValue value = objects_.Resolve((*node)[key]);
    if (!value.Is(Kind::kNull)) return value;
    node = &Ancestor((*node)["Parent"]);
    if (!node->Is(Kind::kDictionary)) break;
  }
  return {};
}

void PageJudge::ReadBox(PdfValue const& page, PageFacts& facts) {
  PdfValue const box = Inherited(page, "MediaBox");
  if (!box.Is(Kind::kArray) || box.items.size() < 4) return;
  double corner[4];
  for (size_t i = 0; i < 4; ++i) corner[i] = objects_.Resolve(box.items[i]).number;
  facts.width = std::abs(corner[2] - corner[0]);
  facts.height = std::abs(corner[3] - corner[1]);
}

// Turns are whole quarters; anything else is none.
void PageJudge::ReadRotation(PdfValue const& page, PageFacts& facts) {
  constexpr int kQuarter = 90, kFull = 360;
  double const angle = Inherited(page, "Rotate").number;
  if (std::abs(angle) > kMaxSide) return;
  int const whole = static_cast<int>(angle);
  if (whole == angle && whole % kQuarter == 0) facts.rotation = (whole % kFull + kFull) % kFull;
}

PageFacts PageJudge::Judge(DWORD number) {
  PageFacts facts;
  PdfValue const page = objects_.Load(number).value;
  if (!page.Is(Kind::kDictionary)) {
    facts.problem = objects_.IsExhausted() ? kTooMuchWork : "is not in the document";
    return facts;
  }
  ReadBox(page, facts);
  ReadRotation(page, facts);
  auto const content = ContentOf(objects_, page);
  Drawn const drawn = content ? DrawnPictures(*content) : Drawn{};
  NamedImage picture = FindPicture(objects_, Inherited(page, "Resources"),
                                   content ? &drawn : nullptr, facts.problem);
  PageImage image;
  image.object = std::move(picture.object);
  if (image.object.is_stream) {
    auto const found = drawn.find(picture.name);
    // A picture whose drawing cannot be found is taken to fill the page, the way up that the first
    // drawing has.
    DrawnSize const shown = found != drawn.end() ? found->second
                                                 : DrawnSize{facts.width, facts.height,
                                                             content && ShowsFlipped(*content)};
    image.flipped = shown.flipped;
    Picture(objects_, image.object, shown, facts, image).Judge();
  } else if (facts.problem.empty()) {
    facts.problem = "has a picture that cannot be read";
  }
  if (objects_.IsExhausted()) facts.problem = kTooMuchWork;
  if (facts.problem.empty()) facts.image = std::move(image);
  return facts;
}

}  // namespace sorrelin::tool

// The reader of picture dictionaries, key by key; the first reason to refuse the picture is kept.
#include "tools/extract/codings/picture_shape.h"

#include <algorithm>

#include "tools/documents/stream_reader.h"
#include "tools/extract/codings/jpx_decoder.h"

namespace sorrelin::tool {
namespace {

constexpr long long kMaxSide = 0x7FFFFFFF;
constexpr int kPremultiplied = 2;  // /SMaskInData of colours that are multiplied by their opacity
constexpr size_t kHeaderBytes = size_t{1} << 20;  // of JPEG 2000 data; it comes within these

class ShapeReader {
 public:
  ShapeReader(QPDFObjectHandle stream, QPDFObjectHandle resources, PictureFacts& facts)
      : dictionary_(stream.getDict()), resources_(resources), facts_(facts), shape_(facts.shape) {
    shape_.stream = stream;
  }

  void Read() {
    ReadSize();
    shape_.is_stencil = IsTrue(dictionary_.getKey("/ImageMask"));
    auto const filters = FiltersOf(dictionary_);
    if (filters) ReadCoding(*filters);
    if (shape_.coding == PictureCoding::kJpx) ReadJpx();
    if (shape_.coding != PictureCoding::kJpx || shape_.space == nullptr) ReadSpace();
    ReadBits();
    Refuse(!filters, "its filters cannot be read");
    if (filters) CheckFilters(*filters);
    if (!facts_.problem.empty()) return;
    ReadDecode();
    ReadMask();
  }

 private:
  static bool IsTrue(QPDFObjectHandle value) { return value.isBool() && value.getBoolValue(); }

  void Refuse(bool condition, std::string const& problem) {
    if (condition && facts_.problem.empty()) facts_.problem = problem;
  }

  static DWORD SideOf(QPDFObjectHandle side) {
    double const value = side.isNumber() ? side.getNumericValue() : 0;
    return value >= 1 && value <= kMaxSide ? static_cast<DWORD>(value) : 0;
  }

  void ReadSize() {
    shape_.width = SideOf(dictionary_.getKey("/Width"));
    shape_.height = SideOf(dictionary_.getKey("/Height"));
    Refuse(shape_.width == 0 || shape_.height == 0, "its picture has no size");
  }

  void ReadCoding(std::vector<StreamFilter> const& filters) {
    shape_.filters = filters.size();
    for (StreamFilter const& filter : filters) {
      facts_.compression += (facts_.compression.empty() ? "" : "+") + filter.name;
    }
    if (filters.empty()) facts_.compression = "none";
    if (filters.empty()) return;
    StreamFilter const& last = filters.back();
    if (last.name == "CCITTFaxDecode") ReadFax(last);
    if (last.name == "DCTDecode") ReadDct(last);
    if (last.name == "JPXDecode") shape_.coding = PictureCoding::kJpx;
    if (last.name == "JBIG2Decode") {
      shape_.coding = PictureCoding::kJbig2;
      QPDFObjectHandle globals = QPDFObjectHandle(last.parms).getKeyIfDict("/JBIG2Globals");
      if (globals.isStream()) shape_.globals = globals;
    }
    if (filters.size() == 1) NameCoding(last);
  }

  // A single filter has the name of make's option.
  void NameCoding(StreamFilter const& filter) {
    constexpr std::pair<char const*, char const*> kNames[] = {
        {"FlateDecode", "flate"}, {"RunLengthDecode", "runlength"}, {"DCTDecode", "jpeg"},
        {"JPXDecode", "jpx"},     {"JBIG2Decode", "jbig2"},         {"LZWDecode", "lzw"}};
    for (auto const& [name, usual] : kNames) {
      if (filter.name == name) facts_.compression = usual;
    }
    if (shape_.coding == PictureCoding::kFax) facts_.compression = shape_.fax.k < 0 ? "g4" : "g3";
  }

  static long long Number(QPDFObjectHandle parms, char const* key, long long otherwise) {
    QPDFObjectHandle value = parms.getKeyIfDict(key);
    return value.isNumber() ? static_cast<long long>(value.getNumericValue()) : otherwise;
  }

  void ReadFax(StreamFilter const& filter) {
    shape_.coding = PictureCoding::kFax;
    QPDFObjectHandle parms = filter.parms;
    FaxParms& fax = shape_.fax;
    fax.k = static_cast<int>(std::clamp<long long>(Number(parms, "/K", 0), -1, 1));
    fax.columns =
        static_cast<DWORD>(std::clamp<long long>(Number(parms, "/Columns", 1728), 0, kMaxSide));
    fax.black_is_1 = IsTrue(parms.getKeyIfDict("/BlackIs1"));
    fax.byte_aligned = IsTrue(parms.getKeyIfDict("/EncodedByteAlign"));
    fax.has_marks = IsTrue(parms.getKeyIfDict("/EndOfLine"));
  }

  void ReadDct(StreamFilter const& filter) {
    shape_.coding = PictureCoding::kJpeg;
    shape_.colour_transform =
        static_cast<int>(std::clamp<long long>(Number(filter.parms, "/ColorTransform", -1), -1, 1));
  }

  // The data say of themselves what the dictionary may leave out.
  void ReadJpx() {
    std::string problem = "its JPEG 2000 data are damaged";
    auto const head = StreamText(shape_.stream, kHeaderBytes);
    if (!head) return Refuse(true, problem);
    auto const facts = ReadJpxFacts(*head, problem);
    if (!facts) return Refuse(true, problem);
    long long const alpha = Number(dictionary_, "/SMaskInData", 0);
    shape_.alpha_in_data = alpha == 1 || alpha == kPremultiplied ? static_cast<int>(alpha) : 0;
    jpx_bits_ = facts->bits;
    if (!dictionary_.getKey("/ColorSpace").isNull()) return;
    Refuse(facts->colours == 0, "its colours are in a space of JPEG 2000 that is not read");
    char const* const name = facts->colours == 1   ? "/DeviceGray"
                             : facts->colours == 3 ? "/DeviceRGB"
                                                   : "/DeviceCMYK";
    std::string ignored;
    shape_.space = ColourSpace::Read(QPDFObjectHandle::newName(name), resources_, ignored);
  }

  void ReadSpace() {
    std::string problem;
    QPDFObjectHandle object = shape_.is_stencil ? QPDFObjectHandle::newName("/DeviceGray")
                                                : dictionary_.getKey("/ColorSpace");
    shape_.space = ColourSpace::Read(object, resources_, problem);
    Refuse(shape_.space == nullptr, problem);
  }

  void ReadBits() {
    long long bits = shape_.is_stencil ? 1 : Number(dictionary_, "/BitsPerComponent", 0);
    bool const two_tones =
        shape_.coding == PictureCoding::kFax || shape_.coding == PictureCoding::kJbig2;
    if (two_tones && bits == 0) bits = 1;
    if (shape_.coding == PictureCoding::kJpeg && bits == 0) bits = 8;
    if (shape_.coding == PictureCoding::kJpx) bits = jpx_bits_ > 8 ? 16 : 8;
    bool const known = bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
    shape_.bits = known ? static_cast<int>(bits) : 0;
    Refuse(shape_.bits == 0, "its depth cannot be read");
    Refuse(two_tones && (shape_.bits != 1 || (shape_.space && shape_.Components() != 1)),
           two_tones && shape_.coding == PictureCoding::kFax
               ? "its fax data do not fit its depth"
               : "its JBIG2 data do not fit its depth");
    Refuse(shape_.coding == PictureCoding::kJpeg && shape_.bits != 8,
           "its JPEG data do not fit its depth");
  }

  void CheckFilters(std::vector<StreamFilter> const& filters) {
    for (size_t i = 0; i + 1 < filters.size(); ++i) {
      Refuse(IsPictureCoding(filters[i].name),
             "its data went through filters in an order that is not read (" + facts_.compression +
                 ")");
    }
    Refuse(shape_.coding == PictureCoding::kFax && shape_.fax.columns != shape_.width,
           "its fax data are not as wide as the picture");
    if (filters.size() != 1 || filters[0].name != "FlateDecode" || shape_.space == nullptr) return;
    QPDFObjectHandle parms = filters[0].parms;
    shape_.png_predicted =
        Number(parms, "/Predictor", 1) >= 10 &&
        Number(parms, "/Colors", 1) == static_cast<long long>(shape_.Components()) &&
        Number(parms, "/BitsPerComponent", 8) == shape_.bits &&
        Number(parms, "/Columns", 1) == shape_.width;
  }

  void ReadDecode() {
    double const top = (1 << shape_.bits) - 1;
    shape_.decode = shape_.space->ranges();
    if (shape_.space->family() == SpaceFamily::kIndexed) shape_.decode[0] = {0, top};
    QPDFObjectHandle decode = dictionary_.getKey("/Decode");
    size_t const ends = 2 * shape_.Components();
    if (!decode.isArray() || static_cast<size_t>(decode.getArrayNItems()) < ends) return;
    for (size_t i = 0; i < ends; ++i) {
      QPDFObjectHandle end = decode.getArrayItem(static_cast<int>(i));
      if (!end.isNumber()) continue;
      double& place = i % 2 == 0 ? shape_.decode[i / 2].low : shape_.decode[i / 2].high;
      shape_.usual_decode = shape_.usual_decode && place == end.getNumericValue();
      place = end.getNumericValue();
    }
  }

  void ReadMask() {
    QPDFObjectHandle soft = dictionary_.getKey("/SMask");
    QPDFObjectHandle mask = dictionary_.getKey("/Mask");
    if (shape_.alpha_in_data == kPremultiplied) shape_.mask.matte.resize(shape_.Components());
    if (soft.isStream()) {
      shape_.mask.soft = soft;
      QPDFObjectHandle matte = soft.getDict().getKey("/Matte");
      for (int i = 0; matte.isArray() && i < matte.getArrayNItems(); ++i) {
        shape_.mask.matte.push_back(matte.getArrayItem(i).getNumericValue());
      }
    } else if (mask.isStream()) {
      shape_.mask.stencil = mask;
    } else if (mask.isArray()) {
      ReadKey(mask);
    }
  }

  void ReadKey(QPDFObjectHandle ranges) {
    size_t const components = shape_.Components();
    if (static_cast<size_t>(ranges.getArrayNItems()) < 2 * components) return;
    for (size_t i = 0; i < components; ++i) {
      QPDFObjectHandle low = ranges.getArrayItem(static_cast<int>(2 * i));
      QPDFObjectHandle high = ranges.getArrayItem(static_cast<int>(2 * i + 1));
      shape_.mask.key.push_back({SampleOf(low), SampleOf(high)});
    }
  }

  static unsigned SampleOf(QPDFObjectHandle value) {
    double const number = value.isNumber() ? value.getNumericValue() : 0;
    return static_cast<unsigned>(std::clamp(number, 0.0, 65535.0));
  }

  QPDFObjectHandle dictionary_;
  QPDFObjectHandle resources_;
  PictureFacts& facts_;
  PictureShape& shape_;
  int jpx_bits_ = 8;
};

}  // namespace

PictureFacts ReadPictureShape(QPDFObjectHandle stream, QPDFObjectHandle resources) {
  PictureFacts facts;
  ShapeReader(stream, resources, facts).Read();
  return facts;
}

}  // namespace sorrelin::tool

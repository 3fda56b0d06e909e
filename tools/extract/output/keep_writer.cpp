// Pictures written as they are stored, if the file shows what the page does: a mask, or colours
// that the file cannot express, rule it out.
#include "tools/extract/output/keep_writer.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "tools/documents/stream_reader.h"
#include "tools/extract/codings/fax_decoder.h"
#include "tools/extract/codings/picture_data.h"
#include "tools/extract/codings/sample_decoder.h"
#include "tools/extract/output/jbig2_file.h"
#include "tools/extract/output/jpeg_mark.h"
#include "tools/extract/output/png_writer.h"
#include "tools/extract/output/tiff_writer.h"
#include "tools/extract/page/pixel_maker.h"
#include "tools/formats/jpeg/jpeg_file.h"

namespace sorrelin::tool {
namespace {

constexpr int kGroup3 = 3, kGroup4 = 4;

bool IsDevice(PictureShape const& shape) {
  SpaceFamily const family = shape.space->family();
  return family == SpaceFamily::kGrey || family == SpaceFamily::kRgb;
}

// Whether every value of the single component is the tone that it shows.
bool IsPlainTones(PictureShape const& shape) {
  auto const colours = ColoursOf(shape);
  for (size_t tone = 0; tone < colours.size(); ++tone) {
    RGBQUAD const& colour = colours[tone];
    if (colour.rgbRed != tone || colour.rgbGreen != tone || colour.rgbBlue != tone) return false;
  }
  return true;
}

// Whether a file viewer sees the inks that the page shows: files with an Adobe marker have them the
// other way round, which pages say by their decode array.
bool HasInksOfFile(PictureShape const& shape) {
  constexpr size_t kHeadBytes = 65536;
  constexpr std::string_view kMarker(
      "\xFF\xEE\0\x0E"
      "Adobe",
      9);
  bool const reversed = shape.decode[0].low > shape.decode[0].high;
  for (ComponentRange const& range : shape.decode) {
    if (std::abs(range.high - range.low) != 1 || (range.low > range.high) != reversed) return false;
  }
  auto const head = StreamText(shape.stream, kHeadBytes);
  return head && (head->find(kMarker) != head->npos) == reversed;
}

// JPEG files state their own colours.
bool IsJpegFile(PictureShape const& shape) {
  if (shape.colour_transform != -1) return false;
  if (shape.Components() == 1 && IsPlainTones(shape)) return true;
  if (shape.Components() == 4) return HasInksOfFile(shape);
  return shape.usual_decode && (IsDevice(shape) || !shape.space->profile().empty());
}

// Whether black runs show black and white runs white, or the reverse.
bool IsTwoTones(PictureShape const& shape) {
  auto const colours = ColoursOf(shape);
  return (IsBlack(colours[0]) && IsWhite(colours[1])) ||
         (IsWhite(colours[0]) && IsBlack(colours[1]));
}

bool SetIsBlack(PictureShape const& shape) { return IsBlack(ColoursOf(shape)[1]); }

bool IsPngFile(PictureShape const& shape) {
  if (!shape.png_predicted || !shape.usual_decode || shape.is_stencil) return false;
  if (shape.space->family() == SpaceFamily::kIndexed) return shape.bits <= 8;
  bool const plain = IsDevice(shape) || !shape.space->profile().empty();
  return plain && (shape.Components() == 1 || (shape.Components() == 3 && shape.bits >= 8));
}

class Keeper {
 public:
  Keeper(PagePicture const& picture, Orientation orientation, ByteOutput& output,
         std::string& problem)
      : picture_(picture),
        shape_(picture.strips[0]),
        orientation_(orientation),
        output_(output),
        problem_(problem) {}

  bool Write(KeptAs kept) {
    problem_.clear();
    if (kept == KeptAs::kPng) return WritePng();
    auto const data = ReadPictureData(shape_.stream, problem_);
    if (!data) return false;
    switch (kept) {
      case KeptAs::kJpeg:
        return WriteJpeg(*data);
      case KeptAs::kFax:
        return CheckFax(shape_, *data, problem_) && WriteFax(*data);
      case KeptAs::kJbig2:
        return IsWhole() && WriteJbig2(*data);
      default:
        return IsWhole() && output_.Write(*data);
    }
  }

 private:
  bool IsWhole() {
    NoRows sink;
    return DecodeSamples(shape_, sink, problem_);
  }

  bool WriteJpeg(std::vector<BYTE> const& data) {
    auto const facts = ReadJpegFacts(data);
    size_t const end = JpegEnd(data);
    if (!facts) {
      problem_ = "its JPEG data are damaged, or of a kind that is not read";
    } else if (static_cast<DWORD>(facts->width) != shape_.width ||
               static_cast<DWORD>(facts->height) != shape_.height) {
      problem_ = "its JPEG data are of another size than the picture";
    } else if (static_cast<size_t>(facts->components) != shape_.Components() &&
               !(facts->components == 1 && shape_.space->family() == SpaceFamily::kRgb)) {
      problem_ = "its JPEG data are of " + std::to_string(facts->components) +
                 " components, and its colour space of " + std::to_string(shape_.Components());
    } else if (end == 0) {
      problem_ = kShortData;
    }
    if (!problem_.empty()) return false;
    return output_.Write(OrientedJpeg(std::span(data).first(end), *facts, orientation_));
  }

  bool WriteFax(std::vector<BYTE> const& data) {
    PictureForm form;
    form.width = shape_.width;
    form.height = shape_.height;
    form.depth = 1;
    form.dpi = picture_.dpi;
    TiffCoding coding;
    coding.orientation = orientation_;
    coding.compression = shape_.fax.k < 0 ? kGroup4 : kGroup3;
    if (shape_.fax.k >= 0) coding.fax_options = shape_.fax.k > 0 ? 1 : 0;
    // Runs of black are clear samples unless the parameters say otherwise.
    coding.photometric = SetIsBlack(shape_) == shape_.fax.black_is_1 ? 0 : 1;
    return WriteStripTiff(form, coding, data, output_);
  }

  bool WriteJbig2(std::vector<BYTE> const& data) {
    std::vector<BYTE> globals;
    if (shape_.globals) {
      auto found = ReadPictureData(*shape_.globals, problem_);
      if (!found) return false;
      globals = std::move(*found);
    }
    return WriteJbig2File(globals, data, output_);
  }

  bool WritePng() {
    if (!IsWhole()) return false;
    auto const raw = QPDFObjectHandle(shape_.stream).getRawStreamData();
    PngHead head = {shape_.width, shape_.height,          shape_.bits, 0, shape_.space->palette(),
                    picture_.dpi, shape_.space->profile()};
    if (shape_.Components() == 3) head.colour_type = 2;
    if (shape_.space->family() == SpaceFamily::kIndexed) head.colour_type = 3;
    return WriteDeflatedPng(head, {raw->getBuffer(), raw->getSize()}, output_);
  }

  PagePicture const& picture_;
  PictureShape const& shape_;
  Orientation orientation_;
  ByteOutput& output_;
  std::string& problem_;
};

}  // namespace

KeptAs KeptAsOf(PagePicture const& picture, Orientation orientation) {
  PictureShape const& shape = picture.strips[0];
  if (picture.strips.size() != 1 || !shape.mask.IsNone() || shape.space == nullptr) {
    return KeptAs::kNothing;
  }
  switch (shape.coding) {
    case PictureCoding::kJpeg:
      return IsJpegFile(shape) ? KeptAs::kJpeg : KeptAs::kNothing;
    case PictureCoding::kFax: {
      // TIFF readers look for the mark before each row of Group 3.
      bool const plain = !shape.fax.byte_aligned && (shape.fax.k < 0 || shape.fax.has_marks);
      return plain && IsTwoTones(shape) ? KeptAs::kFax : KeptAs::kNothing;
    }
    case PictureCoding::kJpx:
      return orientation == kUpright && shape.usual_decode ? KeptAs::kJpx : KeptAs::kNothing;
    case PictureCoding::kJbig2:
      return orientation == kUpright && IsTwoTones(shape) && !SetIsBlack(shape) ? KeptAs::kJbig2
                                                                                : KeptAs::kNothing;
    default:
      return orientation == kUpright && IsPngFile(shape) ? KeptAs::kPng : KeptAs::kNothing;
  }
}

char const* ExtensionOf(KeptAs kept) {
  switch (kept) {
    case KeptAs::kJpeg:
      return ".jpg";
    case KeptAs::kJpx:
      return ".jp2";
    case KeptAs::kFax:
      return ".tif";
    case KeptAs::kJbig2:
      return ".jb2";
    default:
      return ".png";
  }
}

bool WriteKept(PagePicture const& picture, KeptAs kept, Orientation orientation, ByteOutput& output,
               std::string& problem) {
  bool written = false;
  bool const caught = CatchDamage(
      [&] { written = Keeper(picture, orientation, output, problem).Write(kept); }, problem);
  return caught && written;
}

}  // namespace sorrelin::tool

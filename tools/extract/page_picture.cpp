// The decoders are handed the true bytes, and samples of any depth as rows of bytes, so that what
// they make of colours does not matter: colours are settled here.
#include "tools/extract/page_picture.h"

#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/inflate_stream.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "tools/documents/png_predictor.h"
#include "tools/formats/jpeg_file.h"

namespace sorrelin::tool {
namespace {

constexpr uint64_t kMaxPictureBytes = 0x7FFF0000;

// The data in a block of the kind that decoders take.
OwnedBlock BlockOf(std::span<BYTE const> data) {
  OwnedBlock block(GlobalAlloc(GHND, data.size()));
  void* const bytes = GlobalLock(block.get());
  if (bytes == nullptr) return {};
  std::memcpy(bytes, data.data(), data.size());
  GlobalUnlock(block.get());
  return block;
}

// Bytes that the data inflate to, as far as it matters whether they are more than `most`.
uint64_t InflatedBytes(std::span<BYTE const> data, uint64_t most) {
  std::array<BYTE, 65536> piece;
  InflateStream stream(data);
  for (uint64_t total = 0;;) {
    size_t const count = stream.Read(piece);
    total += count;
    if (count < piece.size() || total > most) return total;
  }
}

// The first `most` bytes that run-length coded data stand for (ISO 32000-1, 7.4.5). The library's
// decoder takes literals of one byte only, and runs that end with their row.
std::vector<BYTE> ExpandRuns(std::span<BYTE const> data, uint64_t most) {
  constexpr BYTE kEnd = 128;
  std::vector<BYTE> bytes;
  for (size_t at = 0; bytes.size() < most && at + 1 < data.size() && data[at] != kEnd;) {
    BYTE const control = data[at++];
    if (control < kEnd) {
      auto const literal = data.subspan(at, std::min<size_t>(control + 1u, data.size() - at));
      bytes.insert(bytes.end(), literal.begin(), literal.end());
      at += literal.size();
    } else {
      bytes.insert(bytes.end(), 257u - control, data[at++]);
    }
  }
  return bytes;
}

class Decoding {
 public:
  Decoding(CCreatePDF& session, PageImage const& image, std::string& problem)
      : session_(session), image_(image), problem_(problem) {}

  // The library's bitmap: 1 bit of Group 4, samples of JPEG data, or else rows of 8 bits that hold
  // the stream's bytes. Not valid, with the reason told, if there is none.
  OwnedBlock Run() {
    uint64_t const bytes = uint64_t{image_.StoredRowBytes()} * image_.height;
    if (bytes > kMaxPictureBytes) return Fail("its picture is too large");
    if (!Check(bytes)) return {};
    bool const expanded = image_.coding == ImageCoding::kRunLength;
    OwnedBlock const data = BlockOf(expanded ? std::span<BYTE const>(runs_) : image_.data);
    if (!data.IsValid()) return Fail("there is not enough memory");
    OwnedBlock bitmap(Decode(data.get()));
    if (!bitmap.IsValid()) return Fail("its data cannot be decoded: " + Reason());
    return bitmap;
  }

 private:
  OwnedBlock Fail(std::string const& problem) {
    problem_ = problem;
    return {};
  }

  bool Refuse(std::string const& problem) {
    problem_ = problem;
    return false;
  }

  // Whether the data are whole, as far as that can be told before they are decoded.
  bool Check(uint64_t bytes) {
    switch (image_.coding) {
      case ImageCoding::kNone:
        return image_.data.size() >= bytes || Refuse(kShort);
      case ImageCoding::kFlate:
        return CheckFlate(bytes);
      case ImageCoding::kRunLength:
        runs_ = ExpandRuns(image_.data, bytes);
        return runs_.size() >= bytes || Refuse(kShort);
      case ImageCoding::kGroup4:
        // A coded row takes a bit at least.
        return image_.height / 8 <= image_.data.size() || Refuse(kShort);
      default:
        return CheckJpeg();
    }
  }

  // Some writers add a byte or two; the decoder has room for what its rows are padded with, and is
  // given a row more for them.
  bool CheckFlate(uint64_t bytes) {
    uint64_t const most = bytes + image_.StoredRowBytes();
    uint64_t const inflated = InflatedBytes(image_.data, most);
    if (inflated < bytes) return Refuse(kShort);
    if (inflated > most) return Refuse("its data are longer than its picture");
    spare_rows_ = inflated > bytes ? 1 : 0;
    return true;
  }

  bool CheckJpeg() {
    auto const facts = ReadJpegFacts(image_.data);
    if (!facts) return Refuse("its JPEG data are damaged, or of a kind that is not read");
    bool const same_size = static_cast<DWORD>(facts->width) == image_.width &&
                           static_cast<DWORD>(facts->height) == image_.height;
    if (!same_size) return Refuse("its JPEG data are of another size than the picture");
    if (facts->components != image_.space.components) {
      return Refuse("its JPEG data are of " + std::to_string(facts->components) +
                    " components, and its colour space of " +
                    std::to_string(image_.space.components));
    }
    return JpegEnd(image_.data) != 0 || Refuse(kShort);
  }

  HDIB Decode(HGLOBAL data) {
    DWORD const row_bytes = static_cast<DWORD>(image_.StoredRowBytes());
    if (image_.coding == ImageCoding::kJpeg) return session_.CreateDIBFromJPEGData(data);
    if (image_.coding == ImageCoding::kGroup4) {
      return session_.CreateDIBFromCCITTData(data, image_.width, image_.height);
    }
    OwnedBlock const palette(GlobalAlloc(GHND, kPaletteBytes));
    HGLOBAL const table = palette.get();
    if (image_.coding == ImageCoding::kFlate) {
      return session_.CreateDIBFromFLATEData(data, row_bytes, image_.height + spare_rows_,
                                             kKindIndexed, table);
    }
    return session_.CreateDIBFromUncompressedData(data, row_bytes, image_.height, kKindIndexed,
                                                  table);
  }

  std::string Reason() {
    char text[4096] = {};
    session_.GetLastPDFErrorText(text);
    return text;
  }

  static constexpr char kShort[] = "its data end before its picture does";

  CCreatePDF& session_;
  PageImage const& image_;
  std::string& problem_;
  DWORD spare_rows_ = 0;
  std::vector<BYTE> runs_;  // the bytes that run-length coded data stand for
};

// Undoes PNG's prediction in the bitmap, whose rows begin with their tags. False for a tag that
// means nothing.
bool UndoPrediction(PageImage const& image, HDIB block) {
  DibView const bitmap(block);
  BITMAPINFOHEADER const& header = bitmap.header();
  size_t const stride = static_cast<size_t>(DibStride(header.biWidth, header.biBitCount));
  size_t const row_bytes = image.RowBytes();
  size_t const pixel_bytes = static_cast<size_t>(std::max(image.BitsPerPixel() / 8, 1));
  std::vector<BYTE> above(row_bytes);
  BYTE* const bytes = static_cast<BYTE*>(GlobalLock(block));
  bool undone = bytes != nullptr;
  for (DWORD y = 0; undone && y < image.height; ++y) {
    size_t const from_bottom = static_cast<size_t>(header.biHeight) - 1 - y;
    BYTE* const row = bytes + kPaletteRows + from_bottom * stride;
    undone = UndoPngRow(*row, {row + 1, row_bytes}, above, pixel_bytes);
    std::copy_n(row + 1, row_bytes, above.begin());
  }
  if (bytes != nullptr) GlobalUnlock(block);
  return undone;
}

bool IsBlack(RGBQUAD colour) {
  return colour.rgbRed == 0 && colour.rgbGreen == 0 && colour.rgbBlue == 0;
}

bool IsWhite(RGBQUAD colour) {
  return colour.rgbRed == 255 && colour.rgbGreen == 255 && colour.rgbBlue == 255;
}

// Turns the bitmap's rows into those of the picture.
class RowMaker {
 public:
  RowMaker(PageImage const& image, Resolution dpi, DibView const& bitmap)
      : image_(image), bitmap_(bitmap) {
    form_ = {image.width, image.height, image.space.components == 3 ? 24 : 8, {}, dpi};
    if (image.bits == 1)
      SettleBits();
    else if (!image.space.palette.empty())
      form_.palette = image.colours;
  }

  PictureForm const& form() const { return form_; }

  // Whether the bitmap has the shape that is expected.
  bool Fits() const {
    BITMAPINFOHEADER const& header = bitmap_.header();
    bool const jpeg = image_.coding == ImageCoding::kJpeg;
    DWORD const width = jpeg || image_.coding == ImageCoding::kGroup4
                            ? image_.width
                            : static_cast<DWORD>(image_.StoredRowBytes());
    return header.biBitCount == SourceDepth() && static_cast<DWORD>(header.biWidth) == width &&
           header.biHeight > 0 && static_cast<DWORD>(header.biHeight) >= image_.height;
  }

  std::vector<BYTE> const& Row(DWORD y) {
    DWORD const shown = image_.flipped ? image_.height - 1 - y : y;
    ReadSource(shown);
    row_.assign(form_.RowBytes(), 0);
    if (form_.depth == 1) {
      std::transform(source_.data(), source_.data() + row_.size(), row_.data(),
                     [this](BYTE byte) { return static_cast<BYTE>(byte ^ flip_); });
      ClearSpareBits();
    } else if (form_.depth == 24) {
      StoreColours();
    } else {
      StoreSamples();
    }
    return row_;
  }

 private:
  // Black and white need no palette.
  void SettleBits() {
    form_.depth = 1;
    bool const sample_inverted = image_.coding == ImageCoding::kGroup4 && !image_.black_is_1;
    bool const set_is_black = IsBlack(image_.colours[1]) && IsWhite(image_.colours[0]);
    bool const set_is_white = IsWhite(image_.colours[1]) && IsBlack(image_.colours[0]);
    if (!set_is_black && !set_is_white) form_.palette = image_.colours;
    flip_ = sample_inverted != set_is_white ? 0xFF : 0;
  }

  int SourceDepth() const {
    if (image_.coding == ImageCoding::kGroup4) return 1;
    return image_.coding == ImageCoding::kJpeg && image_.space.components == 3 ? 24 : 8;
  }

  void ReadSource(DWORD y) {
    BITMAPINFOHEADER const& header = bitmap_.header();
    uint64_t const stride = DibStride(header.biWidth, header.biBitCount);
    uint64_t const rows_at = header.biBitCount == 24  ? kDibHeaderBytes
                             : header.biBitCount == 1 ? kBilevelRows
                                                      : kPaletteRows;
    uint64_t const tag = image_.predicted ? 1 : 0;
    uint64_t const from_bottom = static_cast<uint64_t>(header.biHeight) - 1 - y;
    source_.resize(static_cast<size_t>(stride));
    ReadOrZero(bitmap_.bytes(), rows_at + from_bottom * stride + tag, source_);
  }

  void ClearSpareBits() {
    unsigned const spare = static_cast<unsigned>(row_.size() * 8 - image_.width);
    row_.back() = static_cast<BYTE>(row_.back() & (0xFFu << spare));
  }

  void StoreColours() {
    std::copy_n(source_.begin(), row_.size(), row_.begin());
    if (image_.coding != ImageCoding::kJpeg) return;
    for (size_t i = 0; i + 2 < row_.size(); i += 3) std::swap(row_[i], row_[i + 2]);
  }

  void StoreSamples() {
    unsigned const bits = static_cast<unsigned>(image_.bits);
    unsigned const mask = (1u << bits) - 1;
    for (size_t x = 0; x < row_.size(); ++x) {
      size_t const bit = x * bits;
      unsigned const sample = source_[bit / 8] >> (8 - bits - bit % 8) & mask;
      row_[x] = form_.palette.empty() ? image_.colours[sample].rgbRed : static_cast<BYTE>(sample);
    }
  }

  PageImage const& image_;
  DibView const& bitmap_;
  PictureForm form_;
  BYTE flip_ = 0;
  std::vector<BYTE> source_;
  std::vector<BYTE> row_;
};

// Whether the data are a JPEG file that shows the picture as the page does.
bool IsJpegFile(PageImage const& image) {
  if (image.coding != ImageCoding::kJpeg || image.flipped) return false;
  if (image.space.components != 1) return true;
  for (size_t tone = 0; tone < image.colours.size(); ++tone) {
    RGBQUAD const& colour = image.colours[tone];
    if (colour.rgbRed != tone || colour.rgbGreen != tone || colour.rgbBlue != tone) return false;
  }
  return true;
}

}  // namespace

bool DecodePicture(CCreatePDF& session, PageImage const& image, Resolution dpi, PictureSink& sink,
                   std::string& problem) {
  OwnedBlock const block = Decoding(session, image, problem).Run();
  if (!block.IsValid()) return false;
  DibView const bitmap(block.get());
  RowMaker rows(image, dpi, bitmap);
  if (!bitmap.IsLocked() || !rows.Fits()) {
    problem = "its data decode to another shape";
    return false;
  }
  if (image.predicted && !UndoPrediction(image, block.get())) {
    problem = "its data are damaged";
    return false;
  }
  if (sink.TakesJpeg() && IsJpegFile(image)) {
    sink.Jpeg(image.data.first(JpegEnd(image.data)));
    return true;
  }
  if (!sink.Begin(rows.form())) return true;
  for (DWORD y = 0; y < image.height; ++y) {
    if (!sink.Row(rows.Row(y))) break;
  }
  return true;
}

}  // namespace sorrelin::tool

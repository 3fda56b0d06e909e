// Keeps the rows of a page as they are read.
#include "tools/formats/raster/raster_source.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tools/formats/picture/pix_rows.h"

namespace sorrelin::tool {
namespace {

constexpr size_t kMostHeldBytes = size_t{1} << 30;

class RasterSource : public ImageSource {
 public:
  RasterSource(RasterPage const& page, Samples samples, std::string damage)
      : page_(page), samples_(std::move(samples)), damage_(std::move(damage)) {}

  int PageCount() const override { return 1; }
  std::optional<StoredImage> Stored(int) override { return std::nullopt; }

  std::optional<Picture> Decode(int, std::string& problem) override {
    problem = kMemoryText;
    Picture picture;
    picture.dpi = page_.dpi;
    picture.frame = page_.frame;
    picture.damage = damage_;
    if (samples_.bits > 1) {
      picture.samples = samples_;
      return picture;
    }
    picture.pix = Bilevel();
    if (picture.pix == nullptr) return std::nullopt;
    return picture;
  }

 private:
  // A set bit of the picture library is black.
  PixPtr Bilevel() const {
    PixPtr pix(pixCreate(page_.width, page_.height, 1));
    if (pix == nullptr) return nullptr;
    size_t const row_bytes = page_.RowBytes();
    for (int y = 0; y < page_.height; ++y) {
      UnpackWords(std::span(samples_.bytes).subspan(static_cast<size_t>(y) * row_bytes, row_bytes),
                  pixGetData(pix.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix.get()));
    }
    pixInvert(pix.get(), pix.get());
    pixSetPadBits(pix.get(), 0);
    return pix;
  }

  RasterPage page_;
  Samples samples_;
  std::string damage_;
};

}  // namespace

std::unique_ptr<ImageSource> TakeRasterPage(RasterStream& stream, std::string& problem) {
  auto const page = stream.NextPage(problem);
  if (!page) return nullptr;
  size_t const row_bytes = page->RowBytes();
  if (row_bytes > kMostHeldBytes / static_cast<size_t>(page->height)) {
    return problem = "has a page of more than 1 GiB (print it again at fewer dots per inch)",
           nullptr;
  }
  Samples samples;
  samples.width = page->width;
  samples.height = page->height;
  samples.colours = page->colours;
  samples.bits = page->bits;
  std::vector<BYTE> row(row_bytes);
  std::string damage;
  for (int y = 0; y < page->height && stream.ReadRow(row, damage); ++y) {
    samples.bytes.insert(samples.bytes.end(), row.begin(), row.end());
  }
  BYTE const white = page->colours == ImageColours::kCmyk ? 0 : 0xFF;
  samples.bytes.resize(static_cast<size_t>(page->height) * row_bytes, white);
  return std::make_unique<RasterSource>(*page, std::move(samples), std::move(damage));
}

}  // namespace sorrelin::tool

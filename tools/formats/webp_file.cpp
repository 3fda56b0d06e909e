// WebP files through libwebp, row by row, so that the whole rows of a damaged file are kept.
#include "tools/formats/webp_file.h"

#include <webp/decode.h>
#include <webp/demux.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "tools/formats/picture/exif.h"

namespace sorrelin::tool {
namespace {

constexpr char kExifMark[] = "Exif\0";  // six bytes with its terminator; some writers put it first

struct DemuxerDelete {
  void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DemuxerDelete>;

struct DecoderDelete {
  void operator()(WebPIDecoder* decoder) const { WebPIDelete(decoder); }
};
using RowDecoder = std::unique_ptr<WebPIDecoder, DecoderDelete>;

// The first picture, without the file around it.
std::span<BYTE const> FirstFrame(WebPDemuxer* demuxer) {
  WebPIterator frame;
  if (WebPDemuxGetFrame(demuxer, 1, &frame) == 0) return {};
  std::span<BYTE const> const bytes = {frame.fragment.bytes, frame.fragment.size};
  WebPDemuxReleaseIterator(&frame);
  return bytes;
}

ExifFacts ExifOf(WebPDemuxer* demuxer) {
  WebPChunkIterator chunk;
  if (WebPDemuxGetChunk(demuxer, "EXIF", 1, &chunk) == 0) return {};
  std::span<BYTE const> block = {chunk.chunk.bytes, chunk.chunk.size};
  bool const marked = block.size() > sizeof kExifMark &&
                      std::memcmp(block.data(), kExifMark, sizeof kExifMark) == 0;
  ExifFacts const facts = ReadExif(marked ? block.subspan(sizeof kExifMark) : block);
  WebPDemuxReleaseChunkIterator(&chunk);
  return facts;
}

void ReadProfile(WebPDemuxer* demuxer, Picture& picture) {
  WebPChunkIterator chunk;
  if (WebPDemuxGetChunk(demuxer, "ICCP", 1, &chunk) == 0) return;
  picture.profile = UsableProfile({chunk.chunk.bytes, chunk.chunk.size}, 3);
  if (picture.profile == nullptr) picture.changes.Add(Change::kProfile);
  WebPDemuxReleaseChunkIterator(&chunk);
}

// The rows that were decoded; the others are white.
PixPtr PixOf(WebPIDecoder* decoder, int width, int height) {
  PixPtr pix(pixCreate(width, height, 32));
  if (pix == nullptr) return nullptr;
  pixSetAll(pix.get());
  int rows = 0, stride = 0;
  BYTE const* const data = WebPIDecGetRGB(decoder, &rows, nullptr, nullptr, &stride);
  for (int y = 0; data != nullptr && y < rows; ++y) {
    BYTE const* pixel = data + static_cast<ptrdiff_t>(y) * stride;
    l_uint32* const line = pixGetData(pix.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix.get());
    for (int x = 0; x < width; ++x, pixel += 4) {
      composeRGBPixel(pixel[0], pixel[1], pixel[2], line + x);
      line[x] |= l_uint32{pixel[3]} << L_ALPHA_SHIFT;
    }
  }
  return pix;
}

std::string DamageOf(VP8StatusCode status) {
  if (status == VP8_STATUS_OK) return {};
  return status == VP8_STATUS_SUSPENDED || status == VP8_STATUS_NOT_ENOUGH_DATA
             ? "the data end before the picture does"
             : "its coded data cannot be decoded";
}

}  // namespace

std::optional<Picture> DecodeWebp(std::span<BYTE const> file) {
  WebPData const data = {file.data(), file.size()};
  WebPDemuxState state = WEBP_DEMUX_DONE;
  Demuxer const demuxer(WebPDemuxPartial(&data, &state));
  auto frame = demuxer != nullptr ? FirstFrame(demuxer.get()) : std::span<BYTE const>{};
  if (frame.empty()) frame = file;
  WebPBitstreamFeatures features;
  if (WebPGetFeatures(frame.data(), frame.size(), &features) != VP8_STATUS_OK) return std::nullopt;
  RowDecoder const decoder(WebPINewRGB(MODE_RGBA, nullptr, 0, 0));
  if (decoder == nullptr) return std::nullopt;
  Picture picture;
  picture.damage = DamageOf(WebPIUpdate(decoder.get(), frame.data(), frame.size()));
  if (picture.damage.empty() && state < WEBP_DEMUX_DONE) picture.damage = "its end is missing";
  PixPtr pix = PixOf(decoder.get(), features.width, features.height);
  if (pix == nullptr) return std::nullopt;
  if (features.has_alpha != 0) {
    pixSetSpp(pix.get(), 4);
    if (BlendOnWhite(pix.get(), false)) picture.changes.Add(Change::kTransparency);
  }
  if (demuxer != nullptr) {
    ExifFacts const exif = ExifOf(demuxer.get());
    if (exif.orientation != 1) picture.changes.Add(Change::kTurned);
    pix = Upright(std::move(pix), exif.orientation);
    if (pix == nullptr) return std::nullopt;
    picture.dpi = exif.dpi;
    if (exif.orientation >= 5) std::swap(picture.dpi.x, picture.dpi.y);
    bool const several = WebPDemuxGetI(demuxer.get(), WEBP_FF_FRAME_COUNT) > 1;
    if (several) picture.changes.Add(Change::kFirstPicture);
    ReadProfile(demuxer.get(), picture);
  }
  picture.pix = std::move(pix);
  return picture;
}

}  // namespace sorrelin::tool

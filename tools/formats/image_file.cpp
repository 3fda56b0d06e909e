// Finds where each picture of a file ends.
#include "tools/formats/image_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/cli/output_file.h"
#include "tools/cli/text.h"
#include "tools/formats/jpeg/jpeg_file.h"
#include "tools/formats/pnm_file.h"
#include "tools/formats/raster/raster_source.h"
#include "tools/formats/tiff/tiff_source.h"
#include "tools/system/names.h"

namespace sorrelin::tool {
namespace {

constexpr std::array<BYTE, 8> kPngSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::array<BYTE, 3> kJpegStart = {0xFF, 0xD8, 0xFF};
constexpr std::array<BYTE, 5> kPdfStart = {'%', 'P', 'D', 'F', '-'};
constexpr char kIsDocument[] =
    "is a PDF document and no picture (qpdf --empty --pages one.pdf two.pdf -- all.pdf joins "
    "documents)";
constexpr size_t kPngChunkFrameBytes = 12;
constexpr size_t kFirstLook = 1 << 20;
constexpr size_t kMaxRecordBytes = 1 << 26;  // of what a camera adds, films apart

bool StartsWith(std::span<BYTE const> bytes, std::span<BYTE const> start) {
  return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

// Whether one of the pictures starts so that may follow each other.
bool StartsStreamed(std::span<BYTE const> bytes) {
  return IsPnm(bytes) || StartsWith(bytes, kPngSignature) || StartsWith(bytes, kJpegStart);
}

size_t NumberAt(std::span<BYTE const> bytes, size_t at) {
  return size_t{bytes[at]} << 24 | size_t{bytes[at + 1]} << 16 | size_t{bytes[at + 2]} << 8 |
         bytes[at + 3];
}

// Bytes up to the end of the chunk that ends a PNG picture; all there are if there is none.
size_t PngEnd(ByteStream& stream) {
  constexpr std::array<BYTE, 4> kEnd = {'I', 'E', 'N', 'D'};
  size_t at = kPngSignature.size();
  for (;;) {
    auto const bytes = stream.Peek(at + kPngChunkFrameBytes);
    if (bytes.size() < at + kPngChunkFrameBytes) return SIZE_MAX;
    bool const last = StartsWith(bytes.subspan(at + 4), kEnd);
    at += kPngChunkFrameBytes + NumberAt(bytes, at);
    if (last) return at;
  }
}

// Bytes up to and with the end marker of a JPEG picture; all there are if there is none.
size_t JpegEndIn(ByteStream& stream) {
  for (size_t look = kFirstLook;; look *= 2) {
    auto const bytes = stream.Peek(look);
    if (size_t const end = JpegEnd(bytes); end != 0) return end;
    if (bytes.size() < look) return SIZE_MAX;
  }
}

// Whether the header has an index of several views (CIPA DC-007).
bool HasViewIndex(std::span<BYTE const> jpeg) {
  constexpr std::array<BYTE, 4> kIndexMark = {'M', 'P', 'F', 0};
  constexpr BYTE kMarkerOfIndex = 0xE2, kStartOfScan = 0xDA;
  size_t at = 2;
  while (at + 8 < jpeg.size() && jpeg[at] == 0xFF && jpeg[at + 1] != kStartOfScan) {
    bool const index =
        jpeg[at + 1] == kMarkerOfIndex && StartsWith(jpeg.subspan(at + 4), kIndexMark);
    if (index) return true;
    at += 2 + (size_t{jpeg[at + 2]} << 8 | jpeg[at + 3]);
  }
  return false;
}

// Whether what follows a photograph is a film, which starts with a box of its type, or a list of
// records that ends with its mark.
bool IsCameraRecord(ByteStream& stream) {
  constexpr std::array<BYTE, 4> kFilm = {'f', 't', 'y', 'p'}, kListEnd = {'S', 'E', 'F', 'T'};
  auto const start = stream.Peek(8);
  if (start.size() < 8 || StartsStreamed(start)) return false;
  if (StartsWith(start.subspan(4), kFilm)) return true;
  return StartsWith(stream.Peek(kMaxRecordBytes).last(4), kListEnd);
}

// The rest of the stream as a temporary file. Null with the reason in `problem`.
std::unique_ptr<OutputFile> Spooled(ByteStream& stream, std::string& problem) {
  constexpr size_t kPieceBytes = size_t{1} << 18;
  auto spool = OutputFile::Temporary(problem);
  if (spool == nullptr) return nullptr;
  std::ofstream out(spool->path(), std::ios::binary);
  for (;;) {
    auto const piece = stream.Take(kPieceBytes);
    if (piece.empty()) break;
    out.write(reinterpret_cast<char const*>(piece.data()),
              static_cast<std::streamsize>(piece.size()));
  }
  out.close();
  if (out) return spool;
  problem = "cannot be kept while it is read (make room in the directory that " +
            TemporaryVariable() + " names)";
  return nullptr;
}

}  // namespace

std::unique_ptr<ImageFile> ImageFile::Open(std::string const& name, std::string& problem) {
  auto stream = ByteStream::Open(name, problem);
  if (stream == nullptr) return nullptr;
  return std::unique_ptr<ImageFile>(new ImageFile(name, std::move(stream)));
}

std::unique_ptr<ImageSource> ImageFile::Next(std::string& problem) {
  problem.clear();
  if (begun_ && AtEnd()) return nullptr;
  auto source = TakeSource(problem);
  if (source == nullptr) ended_ = true;
  if (!stream_->problem().empty()) problem = stream_->problem();
  if (!problem.empty()) source.reset();
  begun_ = true;
  return source;
}

bool ImageFile::AtEnd() {
  return ended_ || (raster_ != nullptr ? raster_->AtEnd() : stream_->AtEnd());
}

std::unique_ptr<ImageSource> ImageFile::TakeSource(std::string& problem) {
  if (raster_ != nullptr) return TakeRasterPage(*raster_, problem);
  auto const start = stream_->Peek(kFormatBytes);
  if (!stream_->problem().empty()) return nullptr;
  if (start.empty()) return problem = "is empty (scan or save it again)", nullptr;
  if (IsPnm(start)) {
    auto source = TakePnm(*stream_, problem);
    SkipPadding();
    return source;
  }
  if (StartsWith(start, kPngSignature))
    return SourceOfBytes(stream_->Take(PngEnd(*stream_)), problem);
  if (StartsWith(start, kJpegStart)) return TakeJpeg(problem);
  if (begun_) return problem = kLeftOver, nullptr;
  if (auto const kind = RasterKindOf(start)) return TakeRaster(*kind, problem);
  if (StartsWith(start, kPdfStart)) return problem = kIsDocument, nullptr;
  ended_ = true;
  if (IsTiff(start)) return TakeTiff(problem);
  return SourceOfBytes(stream_->TakeRest(), problem);
}

// A file on disk stays there, and any other goes there: its pages may be far apart.
std::unique_ptr<ImageSource> ImageFile::TakeTiff(std::string& problem) {
  std::error_code ignored;
  bool const on_disk =
      name_ != kStandardInput && std::filesystem::is_regular_file(PathOf(name_), ignored);
  if (on_disk) return OpenTiff(name_, nullptr, problem);
  auto spool = Spooled(*stream_, problem);
  if (spool == nullptr) return nullptr;
  std::string const name = spool->path().string();
  return OpenTiff(name, std::move(spool), problem);
}

// Cameras put further views, films and records of their own after the picture, and some name them
// in an index in its header.
std::unique_ptr<ImageSource> ImageFile::TakeJpeg(std::string& problem) {
  auto bytes = stream_->Take(JpegEndIn(*stream_));
  bool const has_index = HasViewIndex(bytes);
  auto source = SourceOfBytes(std::move(bytes), problem);
  if (source == nullptr || stream_->AtEnd()) return source;
  if (has_index || IsCameraRecord(*stream_)) {
    ended_ = true;
    source->AddChange(Change::kFirstPicture);
  }
  while (!ended_ && !stream_->AtEnd() && stream_->Peek(1)[0] == 0) stream_->Get();
  return source;
}

std::unique_ptr<ImageSource> ImageFile::TakeRaster(RasterKind const& kind, std::string& problem) {
  raster_ = std::make_unique<RasterStream>(*stream_, kind);
  auto source = TakeRasterPage(*raster_, problem);
  if (source == nullptr && problem.empty()) problem = "has no pages (print it again)";
  return source;
}

void ImageFile::SkipPadding() {
  auto rest = stream_->Peek(1);
  while (!rest.empty() && (rest[0] == ' ' || (rest[0] >= '\t' && rest[0] <= '\r'))) {
    stream_->Get();
    rest = stream_->Peek(1);
  }
}

bool StartsAsPicture(std::string const& name) {
  std::string ignored;
  auto const stream = ByteStream::Open(name, ignored);
  if (stream == nullptr) return false;
  auto const start = stream->Peek(kFormatBytes);
  return IsPnm(start) || RasterKindOf(start) || IsPicture(start);
}

}  // namespace sorrelin::tool

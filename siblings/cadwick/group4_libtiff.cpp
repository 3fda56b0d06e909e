// Group 4 coding by libtiff: each picture is one strip of a TIFF file that exists only in memory.
#include <siblings/cadwick/cadwick.h>
#include <siblings/cadwick/group4.h>
#include <siblings/cadwick/tiff_client.h>

#include <algorithm>
#include <vector>

namespace sorrelin::cadwick {
namespace {

constexpr uint64_t kMaxPixelBytes = uint64_t{1} << 32;
constexpr tmsize_t kWriteBufferBytes = 64 * 1024;

uint64_t RowBytes(uint32_t width) { return (uint64_t{width} + 7) / 8; }

// What a row callback may fill or read: whole units of 4 bytes.
size_t RowBufferBytes(uint32_t width) { return (size_t{width} + 31) / 32 * 4; }

bool Describe(TIFF* tiff, Picture picture) {
  return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width) != 0 &&
         TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height) != 0 &&
         TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1) != 0 &&
         TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) != 0 &&
         TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, picture.height) != 0 &&
         TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4) != 0 &&
         TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE) != 0 &&
         TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) != 0 &&
         TIFFWriteBufferSetup(tiff, nullptr, kWriteBufferBytes) != 0;
}

// Codes every row and the end mark.
Outcome WriteRows(TIFF* tiff, Picture picture, RowCallback rows) {
  std::vector<BYTE> row(RowBufferBytes(picture.width));
  for (uint32_t y = 0; y < picture.height; ++y) {
    if (rows.function(row.data(), static_cast<int32_t>(y), rows.user) != CCITT_ROW_DONE) {
      return Outcome::kStopped;
    }
    if (TIFFWriteScanline(tiff, row.data(), y, 0) < 1) return Outcome::kNoMemory;
  }
  return TIFFFlushData(tiff) != 0 ? Outcome::kDone : Outcome::kNoMemory;
}

struct Pass {
  DecodeResult result;
  Complaints::Text complaint;  // why the row behind the last one is not good; empty without such
};

// One way through the data, which `tail` continues. A null function takes every row.
Pass DecodePass(std::span<BYTE const> data, std::span<BYTE const> tail, Picture picture,
                RowCallback rows) {
  TiffReadClient client(picture, data, tail);
  TiffHandle const tiff = OpenTiff(client, "rm");
  if (tiff == nullptr) return {{Outcome::kNoMemory, 0}, {}};
  std::vector<BYTE> row(RowBufferBytes(picture.width));
  Complaints& complaints = client.complaints();
  complaints.Clear();
  for (uint32_t y = 0; y < picture.height; ++y) {
    bool const good = TIFFReadScanline(tiff.get(), row.data(), y, 0) == 1;
    if (complaints.Any() || !good) {
      Outcome const why = complaints.OnlyEndOfData() ? Outcome::kDataEnded : Outcome::kDamaged;
      return {{complaints.Any() ? why : Outcome::kNoMemory, y}, complaints.First()};
    }
    if (rows.function != nullptr &&
        rows.function(row.data(), static_cast<int32_t>(y), rows.user) != CCITT_ROW_DONE) {
      return {{Outcome::kStopped, y}, {}};
    }
  }
  return {{Outcome::kDone, picture.height}, {}};
}

// libtiff calls a code that the end of the data has cut short, and that is none with bits of 0
// behind it, a bad one. It is bad indeed only if other bits behind the data make no difference.
bool DamageIsInside(std::span<BYTE const> data, Picture picture, Pass const& first) {
  static constexpr BYTE kOtherBits[] = {0xFF, 0xFF, 0xFF, 0xFF};
  Picture const upto{picture.width, first.result.rows + 1};
  Pass const second = DecodePass(data, kOtherBits, upto, {});
  return second.result.rows == first.result.rows && second.complaint == first.complaint;
}

}  // namespace

bool ValidPicture(int64_t width, int64_t height) {
  if (width < 1 || height < 1 || width > CADWICK_MAX_WIDTH || height > INT32_MAX) return false;
  return RowBytes(static_cast<uint32_t>(width)) * static_cast<uint64_t>(height) <= kMaxPixelBytes;
}

uint64_t MaxCodedBytes(Picture picture) {
  constexpr uint64_t kEndMarkAndSlack = 4096;
  return 24 * uint64_t{RowBufferBytes(picture.width)} * picture.height + kEndMarkAndSlack;
}

Outcome EncodeGroup4(Picture picture, RowCallback rows, ByteSink& sink) {
  TiffWriteClient client(sink);
  TiffHandle const tiff = OpenTiff(client, "w8");
  if (tiff == nullptr || !Describe(tiff.get(), picture)) return Outcome::kNoMemory;
  client.Arm();
  Outcome const outcome = WriteRows(tiff.get(), picture, rows);
  client.Disarm();
  return client.failed() ? Outcome::kSinkFailed : outcome;
}

DecodeResult DecodeGroup4(std::span<BYTE const> data, Picture picture, RowCallback rows) {
  data = data.first(static_cast<size_t>(std::min<uint64_t>(data.size(), MaxCodedBytes(picture))));
  if (data.empty()) return {Outcome::kDataEnded, 0};
  Pass pass = DecodePass(data, {}, picture, rows);
  if (pass.result.outcome == Outcome::kDamaged && !DamageIsInside(data, picture, pass)) {
    pass.result.outcome = Outcome::kDataEnded;
  }
  return pass.result;
}

}  // namespace sorrelin::cadwick

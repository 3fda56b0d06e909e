// The callbacks of libtiff's made-up files, and the head of the file that is read.
#include <siblings/cadwick/tiff_client.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace sorrelin::cadwick {
namespace {

TiffClient& ClientOf(thandle_t handle) { return *static_cast<TiffClient*>(handle); }

tmsize_t ReadProc(thandle_t handle, void* buffer, tmsize_t bytes) {
  return ClientOf(handle).Read(buffer, bytes);
}

tmsize_t WriteProc(thandle_t handle, void* buffer, tmsize_t bytes) {
  return ClientOf(handle).Write(buffer, bytes);
}

toff_t SeekProc(thandle_t handle, toff_t offset, int origin) {
  return ClientOf(handle).Seek(offset, origin);
}

toff_t SizeProc(thandle_t handle) { return ClientOf(handle).Size(); }

int CloseProc(thandle_t) { return 0; }

int Complain(TIFF*, void* client, char const*, char const* format, va_list arguments) {
  constexpr int kDoNotCallGlobalHandlers = 1;
  static_cast<TiffClient*>(client)->complaints().Add(format, arguments);
  return kDoNotCallGlobalHandlers;
}

// Writes TIFF 6.0 little-endian fields one after another.
class HeadWriter {
 public:
  explicit HeadWriter(std::span<BYTE> out) : out_(out) {}
  void Put16(uint32_t value) { Put(value, 2); }
  void Put32(uint32_t value) { Put(value, 4); }
  // A directory entry with one value of type LONG, which serves fields of type SHORT too.
  void PutEntry(uint32_t tag, uint64_t value) {
    Put16(tag);
    Put16(TIFF_LONG);
    Put32(1);
    Put32(static_cast<uint32_t>(value));
  }

 private:
  void Put(uint32_t value, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) out_[at_++] = static_cast<BYTE>(value >> (8 * i));
  }

  std::span<BYTE> out_;
  size_t at_ = 0;
};

// libtiff takes more than ten times a strip's pixels for a mistake and cuts the data, so the strip
// is described as high as its data may demand; the rows behind the picture are never read.
uint32_t DescribedHeight(Picture picture, uint64_t strip_bytes) {
  return static_cast<uint32_t>(std::max<uint64_t>(picture.height, strip_bytes / 10 + 1));
}

}  // namespace

void Complaints::Add(char const* format, va_list arguments) {
  Text text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  if (!any_) first_ = text;
  any_ = true;
  std::string_view const complaint = text.data();
  if (complaint.starts_with("Premature EOF")) {
    end_of_input_ = true;
  } else if (!complaint.starts_with("Premature EOL")) {
    damage_ = true;
  }
}

uint64_t TiffClient::Seek(uint64_t offset, int origin) {
  uint64_t const base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? position_ : Size();
  position_ = base + offset;
  return position_;
}

TiffReadClient::TiffReadClient(Picture picture, std::span<BYTE const> data,
                               std::span<BYTE const> tail)
    : data_(data), tail_(tail) {
  uint64_t const strip_bytes = data.size() + tail.size();
  uint32_t const height = DescribedHeight(picture, strip_bytes);
  HeadWriter head(head_);
  head.Put16(TIFF_LITTLEENDIAN);
  head.Put16(TIFF_VERSION_CLASSIC);
  head.Put32(8);
  head.Put16(kEntries);
  head.PutEntry(TIFFTAG_IMAGEWIDTH, picture.width);
  head.PutEntry(TIFFTAG_IMAGELENGTH, height);
  head.PutEntry(TIFFTAG_BITSPERSAMPLE, 1);
  head.PutEntry(TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
  head.PutEntry(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  head.PutEntry(TIFFTAG_STRIPOFFSETS, kHeadBytes);
  head.PutEntry(TIFFTAG_SAMPLESPERPIXEL, 1);
  head.PutEntry(TIFFTAG_ROWSPERSTRIP, height);
  head.PutEntry(TIFFTAG_STRIPBYTECOUNTS, strip_bytes);
  head.Put32(0);
}

tmsize_t TiffReadClient::Read(void* buffer, tmsize_t bytes) {
  BYTE* out = static_cast<BYTE*>(buffer);
  uint64_t part_start = 0;
  size_t left = static_cast<size_t>(std::max<tmsize_t>(bytes, 0));
  for (std::span<BYTE const> const part : {std::span<BYTE const>(head_), data_, tail_}) {
    if (position_ >= part_start && position_ < part_start + part.size()) {
      size_t const at = static_cast<size_t>(position_ - part_start);
      size_t const count = std::min(left, part.size() - at);
      std::memcpy(out, part.data() + at, count);
      out += count;
      position_ += count;
      left -= count;
    }
    part_start += part.size();
  }
  return out - static_cast<BYTE*>(buffer);
}

tmsize_t TiffWriteClient::Write(void const* buffer, tmsize_t bytes) {
  size_t const count = static_cast<size_t>(bytes);
  if (armed_ && !sink_.Write({static_cast<BYTE const*>(buffer), count})) {
    failed_ = true;
    return -1;
  }
  position_ += count;
  size_ = std::max(size_, position_);
  return bytes;
}

TiffHandle OpenTiff(TiffClient& client, char const* mode) {
  TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
  if (options == nullptr) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options, Complain, &client);
  TIFFOpenOptionsSetWarningHandlerExtR(options, Complain, &client);
  TiffHandle tiff(TIFFClientOpenExt("memory", mode, &client, ReadProc, WriteProc, SeekProc,
                                    CloseProc, SizeProc, nullptr, nullptr, options));
  TIFFOpenOptionsFree(options);
  return tiff;
}

}  // namespace sorrelin::cadwick

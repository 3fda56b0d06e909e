// Pictures of rows for the tests of the Group 4 coder, callbacks that give and take them, and a
// second way to code and decode: libtiff on a TIFF file on disk.
#ifndef TESTS_SIBLINGS_CADWICK_SUPPORT_H_
#define TESTS_SIBLINGS_CADWICK_SUPPORT_H_

#include <siblings/cadwick/cadwick.h>
#include <sorrelin/platform/memory.h>
#include <tests/support/dib.h>
#include <tests/support/temp_dir.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string_view>
#include <vector>

namespace test {

struct Picture {
  int32_t width = 0;
  std::vector<Bytes> rows;

  int32_t height() const { return static_cast<int32_t>(rows.size()); }
  size_t row_bytes() const { return (static_cast<size_t>(width) + 7) / 8; }
  bool operator==(Picture const&) const = default;
};

// Clears the bits after the last pixel.
inline void CutRow(Bytes& row, int32_t width) {
  if (width % 8 != 0) row.back() = static_cast<BYTE>(row.back() & (0xFF00 >> (width % 8)));
}

// The same numbers on every system for one seed.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  unsigned operator()() { return static_cast<unsigned>(engine_()); }

 private:
  std::mt19937 engine_;
};

// Runs of up to `longest` pixels, and a third of the rows close to the row above, so that every
// mode of T.6 occurs.
inline Picture RandomPicture(int32_t width, int32_t height, unsigned seed, unsigned longest = 20) {
  Random random(seed);
  Picture picture{width, {}};
  for (int32_t y = 0; y < height; ++y) {
    Bytes row(picture.row_bytes());
    if (y > 0 && random() % 3 != 0) {
      row = picture.rows.back();
      row[random() % row.size()] ^= static_cast<BYTE>(1u << random() % 8);
    } else {
      bool black = random() % 2 != 0;
      for (int32_t x = 0; x < width; black = !black) {
        for (unsigned run = 1 + random() % longest; run > 0 && x < width; --run, ++x) {
          size_t const at = static_cast<size_t>(x);
          if (black) row[at / 8] = static_cast<BYTE>(row[at / 8] | (0x80 >> (at % 8)));
        }
      }
    }
    CutRow(row, width);
    picture.rows.push_back(row);
  }
  return picture;
}

// The bytes of bits written as 0 and 1, blanks ignored, filled up with 0.
inline Bytes Bits(std::string_view text) {
  Bytes bytes;
  size_t count = 0;
  for (char const c : text) {
    if (c == ' ') continue;
    if (count % 8 == 0) bytes.push_back(0);
    if (c == '1') bytes.back() = static_cast<BYTE>(bytes.back() | (0x80 >> (count % 8)));
    ++count;
  }
  return bytes;
}

// Supplies a picture's rows as the library does: the whole padded row, and 3 past the last one.
struct Giver {
  Picture const* picture;
  BYTE padding = 0;      // after the row's bytes
  int32_t fail_at = -1;  // row that is answered with 9
  std::vector<int32_t> asked;

  static int Call(BYTE* row, int32_t index, void* user) {
    Giver& self = *static_cast<Giver*>(user);
    self.asked.push_back(index);
    if (index == self.fail_at) return 9;
    if (index >= self.picture->height()) return CCITT_ROW_PAST_END;
    Bytes const& given = self.picture->rows[static_cast<size_t>(index)];
    std::memset(row, self.padding, (given.size() + 3) / 4 * 4);
    std::copy(given.begin(), given.end(), row);
    return CCITT_ROW_DONE;
  }
};

// Collects rows; stops the decoder when it has `stop_after` of them.
struct Taker {
  Picture picture;
  size_t stop_after = SIZE_MAX;
  bool in_order = true;

  static int Call(BYTE* row, int32_t index, void* user) {
    Taker& self = *static_cast<Taker*>(user);
    self.in_order = self.in_order && index == self.picture.height();
    self.picture.rows.emplace_back(row, row + self.picture.row_bytes());
    return self.picture.rows.size() >= self.stop_after ? CCITT_ROW_STOP : CCITT_ROW_DONE;
  }
};

// A memory file over a block, closed with this object.
class OpenMemory {
 public:
  explicit OpenMemory(HGLOBAL block)
      : handle_(mOpen(block, static_cast<DWORD>(GlobalSize(block)))) {}
  ~OpenMemory() { mClose(handle_); }
  OpenMemory(OpenMemory const&) = delete;
  OpenMemory& operator=(OpenMemory const&) = delete;
  operator void*() const { return handle_; }

 private:
  void* handle_;
};

inline Block BlockOf(Bytes const& bytes) {
  HGLOBAL const handle = GlobalAlloc(GHND, bytes.size());
  if (bytes.empty()) return Block(handle);
  std::memcpy(GlobalLock(handle), bytes.data(), bytes.size());
  GlobalUnlock(handle);
  return Block(handle);
}

// Codes as the library does: a block of 1 byte, opened, coded into, closed. Empty on failure.
inline Bytes Encode(Picture const& picture, BYTE padding = 0) {
  Block const block(GlobalAlloc(GHND, 1));
  Giver giver{&picture, padding, -1, {}};
  void* const file = mOpen(block, 1);
  int const result =
      EncodeCcittImage(file, picture.width, picture.height(), CCITT_GROUP4, &giver, Giver::Call);
  mClose(file);
  return result != 0 ? block.Content() : Bytes{};
}

struct Decoded {
  int result = 0;
  int error = 0;  // TiffError, if the result is 0
  int rows_told = 0;
  Picture picture;
};

inline Decoded DecodeFrom(void* file, int32_t width, int32_t height) {
  Taker taker{{width, {}}};
  Decoded decoded;
  decoded.result = DecodeCcittImage(file, width, height, CCITT_GROUP4, &taker, Taker::Call);
  decoded.error = decoded.result == 0 ? TiffError() : 0;
  decoded.rows_told = CcittRowsDecoded();
  decoded.picture = taker.picture;
  return decoded;
}

inline Decoded Decode(Bytes const& data, int32_t width, int32_t height) {
  Block const block = BlockOf(data);
  OpenMemory const file(block);
  return DecodeFrom(file, width, height);
}

// One strip of Group 4 data in a TIFF file on disk.
class TiffOnDisk {
 public:
  Bytes Encode(Picture const& picture) {
    TIFF* const tiff = Create(picture.width, picture.height());
    Bytes all;
    for (Bytes const& row : picture.rows) all.insert(all.end(), row.begin(), row.end());
    TIFFWriteEncodedStrip(tiff, 0, all.data(), static_cast<tmsize_t>(all.size()));
    TIFFClose(tiff);
    TIFF* const written = TIFFOpen(path().c_str(), "r");
    Bytes data(static_cast<size_t>(TIFFRawStripSize(written, 0)));
    TIFFReadRawStrip(written, 0, data.data(), static_cast<tmsize_t>(data.size()));
    TIFFClose(written);
    return data;
  }

  Picture Decode(Bytes data, int32_t width, int32_t height) {
    TIFF* const tiff = Create(width, height);
    TIFFWriteRawStrip(tiff, 0, data.data(), static_cast<tmsize_t>(data.size()));
    TIFFClose(tiff);
    Picture picture{width, {}};
    TIFF* const written = TIFFOpen(path().c_str(), "r");
    Bytes all(picture.row_bytes() * static_cast<size_t>(height));
    TIFFReadEncodedStrip(written, 0, all.data(), static_cast<tmsize_t>(all.size()));
    TIFFClose(written);
    for (auto row = all.begin(); row != all.end();) {
      auto const end = row + static_cast<std::ptrdiff_t>(picture.row_bytes());
      picture.rows.emplace_back(row, end);
      row = end;
    }
    return picture;
  }

 private:
  std::string path() const { return (folder_ / "strip.tif").string(); }
  TIFF* Create(int32_t width, int32_t height) {
    TIFF* const tiff = TIFFOpen(path().c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    return tiff;
  }

  TempDir folder_;
};

}  // namespace test

#endif  // TESTS_SIBLINGS_CADWICK_SUPPORT_H_

// Run-length data: as an image of any size, into a bitmap whose header does not fit its block, and
// rows that the encoder made come back as they were.
//
// The input is width, height, kind, header bits (2 bytes each), then data.
#include <sorrelin/frame/session.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <tests/support/dib_content.h>

#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_session.h"

namespace {

using test::Block;
using test::Bytes;

constexpr int kKinds[] = {1, 2, 4, 3};

CCreatePDF& Session() {
  static auto const session = std::make_unique<CCreatePDF>();
  return *session;
}

void DecodeImage(Bytes const& data, DWORD width, DWORD height, DWORD kind) {
  Block const block = test::MakeBlock(data);
  Block const palette = test::MakeBlock(Bytes(data.size() % 1100));
  void* const bitmap = Session().CreateDIBFromRLEData(block, width, height, kind, palette);
  fuzz::RequireWholeBitmap(bitmap);
  sorrelin::OwnedBlock const owner(bitmap);
}

void DecodeIntoAnyBitmap(Bytes data, LONG width, LONG height, WORD bits) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biBitCount = bits;
  Bytes bytes(sizeof header + data.size(), 0xEE);
  std::memcpy(bytes.data(), &header, sizeof header);
  Block const bitmap = test::MakeBlock(bytes);
  Session().DecriptRLEData(data.data(), data.size(), bitmap);
}

void GoRound(Bytes const& data, LONG width) {
  LONG const height = static_cast<LONG>(data.size()) / width;
  Block const palette = test::MakeBlock(Bytes(1024));
  Block const bitmap =
      test::MakeDib({.width = width, .height = height, .bits = 8}, [&](LONG x, LONG y) {
        return data[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
      });
  DWORD size = 0;
  Block const coded(Session().ConvertDIB2RLEPDFImage(bitmap, size, PDF_COMPRESSION_RUN_LENGTH));
  Block const back(Session().CreateDIBFromRLEData(coded, static_cast<DWORD>(width),
                                                  static_cast<DWORD>(height), 2, palette));
  fuzz::Require(back.get() != nullptr, "the encoder's data are refused");
  fuzz::Require(test::ReadDib(back).rows == test::ReadDib(bitmap).rows, "other rows come back");
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  fuzz::Cursor input({bytes, size});
  unsigned const width = input.Word();
  unsigned const height = input.Word();
  unsigned const kind = input.Word();
  WORD const bits = static_cast<WORD>(input.Word());
  Bytes const data(input.Rest().begin(), input.Rest().end());
  if (data.empty()) return 0;
  // The upper half of the heights is negative: rows in the order of the data.
  DWORD const signed_height = height < 0x8000 ? height : height | 0xFFFF0000u;
  DecodeImage(data, width, signed_height, static_cast<DWORD>(kKinds[kind % 4]));
  LONG const scale = kind >= 0x8000 ? 65536 : 1;
  DecodeIntoAnyBitmap(data, static_cast<LONG>(width & 0x7FFF) * scale,
                      static_cast<LONG>(height & 0x7FFF) * scale, bits);
  LONG const columns = 1 + static_cast<LONG>(width % 300);
  if (data.size() >= static_cast<size_t>(columns)) GoRound(data, columns);
  return 0;
}

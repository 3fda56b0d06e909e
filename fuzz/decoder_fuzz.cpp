// Image data as each decoder of a session takes them, with sizes of any kind, by way of memory and
// of a temporary file.
//
// The input is decoder, width, height and kind (2 bytes each), then the data.
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/memory.h>
#include <tests/support/dib_content.h>

#include "fuzz/fuzz_session.h"

namespace {

constexpr DWORD kKinds[] = {1, 2, 4, 3};

// The upper quarters of the numbers map to sizes that exceed memory, and to negative ones.
DWORD Size(unsigned number) {
  if (number < 0x8000) return number;
  return number < 0xC000 ? number << 12 : number | 0xFFFF0000;
}

void* Decode(CCreatePDF& session, unsigned decoder, void* data, fuzz::Cursor& input) {
  DWORD const width = Size(input.Word());
  DWORD const height = Size(input.Word());
  DWORD const kind = kKinds[input.Word() % 4];
  test::Block const palette = test::MakeBlock(test::Bytes(input.Rest().size() % 1100));
  switch (decoder % 7) {
    case 0:
      return session.CreateDIBFromUncompressedData(data, width, height, static_cast<int>(kind),
                                                   palette);
    case 1:
      return session.CreateDIBFromFLATEData(data, width, height, kind, palette);
    case 2:
      return session.CreateDIBFromRLEData(data, width, height, kind, palette);
    case 3:
      return session.CreateDIBFromCCITTData(data, width, height);
    case 4:
      return session.CreateDIBFromCCITTDataFile(data, width, height);
    case 5:
      return session.CreateDIBFromJPEGData(data);
    default:
      return session.CreateDIBFromJPEGDataFile(data);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(uint8_t const* bytes, size_t size) {
  constexpr size_t kHeader = 8;
  if (size < kHeader) return 0;
  fuzz::Cursor input({bytes, size});
  unsigned const decoder = input.Word();
  test::Block const data = test::MakeBlock({bytes + kHeader, bytes + size});
  static auto& session = *new fuzz::Session;  // for all inputs
  void* const bitmap = Decode(*session, decoder, data, input);
  fuzz::RequireWholeBitmap(bitmap);
  sorrelin::OwnedBlock const owner(bitmap);
  return 0;
}

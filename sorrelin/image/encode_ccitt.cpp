// CCITT Group 4 image data, coded by the sibling library in memory or through a temporary file.
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/image/encoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/prefetch.h>
#include <sorrelin/platform/row_stride.h>

#include <algorithm>
#include <utility>

namespace sorrelin {

namespace {

// What the row callback is given back.
struct RowSource {
  BITMAPINFOHEADER Header;
  std::span<BYTE const> Bits;  // from the first row on
};

// Memory takes about as long as the coder for this many rows of a page of text.
constexpr int64_t kRowsAhead = 4;

uint64_t PaddedRowBytes(BITMAPINFOHEADER const& header) {
  return RowStride(static_cast<uint64_t>(std::max(header.biWidth, LONG{0})), header.biBitCount);
}

constexpr auto kInverted = [](BYTE bits) { return static_cast<BYTE>(~bits); };

// The bytes of a row that the bitmap holds, counted from its lowest row.
std::span<BYTE const> HeldRow(std::span<BYTE const> bits, int64_t from_bottom, size_t row_bytes) {
  uint64_t const offset = static_cast<uint64_t>(from_bottom) * row_bytes;
  auto const rest = bits.subspan(static_cast<size_t>(std::min<uint64_t>(offset, bits.size())));
  return rest.first(std::min(rest.size(), row_bytes));
}

// Delivers row `index`, the top one being 0, inverted: a set bit is black to the coder. A row
// further down is on its way into the cache while the coder is at work.
int SupplyRow(BYTE* row, int32_t index, void* user) {
  RowSource const& source = *static_cast<RowSource const*>(user);
  int64_t const from_bottom = int64_t{source.Header.biHeight} - index - 1;
  if (index < 0 || from_bottom < 0) return CCITT_ROW_PAST_END;
  std::span<BYTE> const out(row, static_cast<size_t>(PaddedRowBytes(source.Header)));
  auto const held = HeldRow(source.Bits, from_bottom, out.size());
  auto const end = std::transform(held.begin(), held.end(), out.begin(), kInverted);
  std::fill(end, out.end(), kInverted(0));
  if (from_bottom >= kRowsAhead) {
    Prefetch(HeldRow(source.Bits, from_bottom - kRowsAhead, out.size()));
  }
  return CCITT_ROW_DONE;
}

// Kept: the rows are always sought after two colours, whatever biClrUsed says.
RowSource SourceOf(DibView const& dib) {
  return {dib.header(), dib.Part(kBilevelRows, dib.bytes().size())};
}

struct MemoryEntries {
  explicit MemoryEntries(SiblingLibrary const& library)
      : open(library.Entry<mOpenFunction>("mOpen")),
        close(library.Entry<mCloseFunction>("mClose")),
        encode(library.Entry<EncodeCcittImageFunction>("EncodeCcittImage")) {}
  mOpenFunction open;
  mCloseFunction close;
  EncodeCcittImageFunction encode;
};

// The coded data in `block`; 0 or the error code. Kept: `size` is set as soon as it is known, also
// where a later step fails.
DWORD EncodeInMemory(MemoryEntries const& sibling, RowSource& source, OwnedBlock& block,
                     DWORD& size) {
  block = OwnedBlock(GlobalAlloc(GHND, 1));
  if (!block.IsValid()) return PDF_ERROR_MEMORY;
  void* const file = sibling.open(block.get(), 1);
  if (file == nullptr) return PDF_ERROR_MEMORY;
  int const encoded = sibling.encode(file, source.Header.biWidth, source.Header.biHeight,
                                     CCITT_GROUP4, &source, SupplyRow);
  sibling.close(file);
  if (encoded == 0) return PDF_ERROR_ENCODING;
  size = static_cast<DWORD>(GlobalSize(block.get()));
  if (size == 0) return PDF_ERROR_ENCODING;
  if (GlobalLock(block.get()) == nullptr) return PDF_ERROR_MEMORY;
  GlobalUnlock(block.get());
  return PDF_ERROR_NONE;
}

bool Rewind(HANDLE file) {
  return SetFilePointer(file, 0, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER ||
         GetLastError() == ERROR_SUCCESS;
}

// Kept: after a failure the temporary file stays, and stays open.
DWORD EncodeInFile(EncodeCcittImageFunction encode, RowSource& source, OwnedBlock& block,
                   DWORD& size) {
  WCHAR path[MAX_PATH];
  DWORD const made = MakeTempFile(SORRELIN_TEXT("raw"), path);
  if (made != PDF_ERROR_NONE) return made;
  HANDLE const file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                  CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr);
  if (file == INVALID_HANDLE_VALUE) return PDF_ERROR_TEMP_FILE;
  if (encode(file, source.Header.biWidth, source.Header.biHeight, CCITT_GROUP4, &source,
             SupplyRow) == 0) {
    return PDF_ERROR_ENCODING;
  }
  if (!Rewind(file)) return PDF_ERROR_TEMP_FILE;
  size = GetFileSize(file, nullptr);
  if (size == INVALID_FILE_SIZE) return PDF_ERROR_TEMP_FILE;
  DWORD const read = ReadIntoBlock(file, size, block);
  if (read != PDF_ERROR_NONE) return read;
  CloseHandle(file);
  DeleteFileW(path);
  return PDF_ERROR_NONE;
}

// The coded block, or -1 with the code.
Result<OwnedBlock> Outcome(DWORD code, OwnedBlock& block) {
  return code == PDF_ERROR_NONE ? Result<OwnedBlock>(std::move(block)) : Refused(code);
}

}  // namespace

Result<OwnedBlock> EncodeCcitt(DibView const& dib, WCHAR const* name, DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  if (dib.header().biBitCount != 1) return Refused(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  {
    SiblingLibrary const library(name);
    if (!library.IsLoaded()) return Refused(PDF_ERROR_CCITT_LIBRARY);
    MemoryEntries const sibling(library);
    if (sibling.open != nullptr) {
      if (sibling.close == nullptr || sibling.encode == nullptr) {
        return Refused(PDF_ERROR_CCITT_LIBRARY);
      }
      RowSource source = SourceOf(dib);
      OwnedBlock block;
      return Outcome(EncodeInMemory(sibling, source, block, size), block);
    }
  }
  // The missing mOpen is the only thing that chooses the file route.
  return EncodeCcittInFile(dib, name, size);
}

Result<OwnedBlock> EncodeCcittInFile(DibView const& dib, WCHAR const* name, DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  if (dib.header().biBitCount != 1) return Refused(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  SiblingLibrary const library(name);
  if (!library.IsLoaded()) return Refused(PDF_ERROR_CCITT_LIBRARY);
  auto const encode = library.Entry<EncodeCcittImageFunction>("EncodeCcittImage");
  if (encode == nullptr) return Refused(PDF_ERROR_CCITT_LIBRARY);
  RowSource source = SourceOf(dib);
  OwnedBlock block;
  return Outcome(EncodeInFile(encode, source, block, size), block);
}

}  // namespace sorrelin

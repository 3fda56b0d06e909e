// CCITT Group 4 image data, coded by the sibling library in memory or through a temporary file.
#include <sorrelin/frame/session_state.h>
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/image/dib_view.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/prefetch.h>
#include <sorrelin/platform/wide_string.h>

#include <algorithm>

using sorrelin::DibView;
using sorrelin::OwnedBlock;
using sorrelin::SiblingLibrary;

namespace {

// What the row callback is given back.
struct RowSource {
  HDIB hDIB;
  BITMAPINFOHEADER Header;
  std::span<BYTE const> Bits;  // from the first row on
};

// Memory takes about as long as the coder for this many rows of a page of text.
constexpr int64_t kRowsAhead = 4;

uint64_t PaddedRowBytes(BITMAPINFOHEADER const& header) {
  int64_t const bits = int64_t{header.biWidth} * header.biBitCount + 31;
  return bits > 0 ? static_cast<uint64_t>(bits) / 8 & ~uint64_t{3} : 0;
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
    sorrelin::Prefetch(HeldRow(source.Bits, from_bottom - kRowsAhead, out.size()));
  }
  return CCITT_ROW_DONE;
}

// Kept: the rows are always sought behind two colours, whatever biClrUsed says.
RowSource SourceOf(HDIB bitmap, DibView const& dib) {
  return {bitmap, dib.header(), dib.Part(sorrelin::kBilevelRows, dib.bytes().size())};
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
  DWORD const made = sorrelin::MakeTempFile(SORRELIN_TEXT("raw"), path);
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
  DWORD const read = sorrelin::ReadIntoBlock(file, size, block);
  if (read != PDF_ERROR_NONE) return read;
  CloseHandle(file);
  DeleteFileW(path);
  return PDF_ERROR_NONE;
}

}  // namespace

void* sorrelin::SessionState::ConvertDIB2CcittPDFImage(void* hDIB, DWORD& nSize,
                                                       char const* szCodecLibrary) {
  return ConvertDIB2CcittPDFImageW(hDIB, nSize, sorrelin::ToWide(szCodecLibrary).c_str());
}

void* sorrelin::SessionState::ConvertDIB2CcittPDFImageW(void* hDIB, DWORD& nSize,
                                                        WCHAR const* szCodecLibrary) {
  {
    DibView const dib(hDIB);
    if (!dib.IsLocked()) return INVALID_HANDLE_VALUE;
    if (dib.header().biBitCount != 1) return FailBlock(PDF_ERROR_INVALID_BITS_PER_PIXEL);
    SiblingLibrary const library(szCodecLibrary);
    if (!library.IsLoaded()) return FailBlock(PDF_ERROR_CCITT_LIBRARY);
    MemoryEntries const sibling(library);
    if (sibling.open != nullptr) {
      if (sibling.close == nullptr || sibling.encode == nullptr) {
        return FailBlock(PDF_ERROR_CCITT_LIBRARY);
      }
      RowSource source = SourceOf(hDIB, dib);
      OwnedBlock block;
      return EncodedBlock(EncodeInMemory(sibling, source, block, nSize), block);
    }
  }
  // The missing mOpen is the only thing that chooses the file route.
  return ConvertDIB2CcittPDFImageFileW(hDIB, nSize, szCodecLibrary);
}

void* sorrelin::SessionState::ConvertDIB2CcittPDFImageFileW(void* hDIB, DWORD& nSize,
                                                            WCHAR const* szCodecLibrary) {
  DibView const dib(hDIB);
  if (!dib.IsLocked()) return INVALID_HANDLE_VALUE;
  if (dib.header().biBitCount != 1) return FailBlock(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  SiblingLibrary const library(szCodecLibrary);
  if (!library.IsLoaded()) return FailBlock(PDF_ERROR_CCITT_LIBRARY);
  auto const encode = library.Entry<EncodeCcittImageFunction>("EncodeCcittImage");
  if (encode == nullptr) return FailBlock(PDF_ERROR_CCITT_LIBRARY);
  RowSource source = SourceOf(hDIB, dib);
  OwnedBlock block;
  return EncodedBlock(EncodeInFile(encode, source, block, nSize), block);
}

void* sorrelin::SessionState::FailBlock(DWORD nError) {
  Fail(nError);
  return INVALID_HANDLE_VALUE;
}

void* sorrelin::SessionState::EncodedBlock(DWORD nError, OwnedBlock& block) {
  return nError == PDF_ERROR_NONE ? block.Release() : FailBlock(nError);
}

// CCITT Group 4 image data back into a bitmap, decoded by the sibling library from memory or from a
// temporary file.
#include <sorrelin/image/codecs/sibling_library.h>
#include <sorrelin/image/codecs/sibling_names.h>
#include <sorrelin/image/codecs/temp_file.h>
#include <sorrelin/image/decoders.h>
#include <sorrelin/image/rebuilt_dib.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/row_stride.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace sorrelin {

namespace {

constexpr uint64_t kTableBytes = 2 * sizeof(RGBQUAD);

struct Decoder {
  explicit Decoder(SiblingLibrary const& library)
      : decode(library.Entry<DecodeCcittImageFunction>("DecodeCcittImage")),
        error(library.Entry<TiffErrorFunction>("TiffError")),
        rows_decoded(library.Entry<CcittRowsDecodedFunction>("CcittRowsDecoded")) {}
  bool IsComplete() const { return decode != nullptr && error != nullptr; }

  DecodeCcittImageFunction decode;
  TiffErrorFunction error;
  CcittRowsDecodedFunction rows_decoded;  // may be missing
};

struct MemoryFile {
  explicit MemoryFile(SiblingLibrary const& library)
      : open(library.Entry<mOpenFunction>("mOpen")),
        close(library.Entry<mCloseFunction>("mClose")),
        seek(library.Entry<mSeekFunction>("mSeek")) {}
  bool IsComplete() const { return open != nullptr && close != nullptr && seek != nullptr; }

  mOpenFunction open;
  mCloseFunction close;
  mSeekFunction seek;
};

struct Size {
  int32_t width;
  int32_t height;
};

// The bitmap that a decode on this thread fills, locked as long as it runs: a lock for each row
// would cost a tenth of the decode.
class RowTarget {
 public:
  explicit RowTarget(HDIB bitmap)
      : bitmap_(bitmap), block_(bitmap), outer_(std::exchange(current_, this)) {
    if (!bytes_.empty()) {
      std::memcpy(&header_, bytes_.data(), std::min(bytes_.size(), sizeof header_));
    }
  }
  ~RowTarget() { current_ = outer_; }
  RowTarget(RowTarget const&) = delete;
  RowTarget& operator=(RowTarget const&) = delete;

  // The one of the decode on this thread that was given `bitmap` for its rows, or null.
  static RowTarget const* Of(HDIB bitmap) {
    return current_ != nullptr && current_->bitmap_ == bitmap ? current_ : nullptr;
  }

  // The row callback's result: stop if the bitmap cannot be locked. A row that the block has no
  // place for is dropped.
  int Take(BYTE const* row, int32_t index) const {
    if (!block_) return CCITT_ROW_STOP;
    Put(row, index);
    return CCITT_ROW_DONE;
  }

 private:
  // Puts row `index`, the top one being 0, in its place.
  void Put(BYTE const* row, int32_t index) const {
    if (index < 0 || index >= header_.biHeight) return;
    uint64_t const width = static_cast<uint64_t>(std::max(header_.biWidth, LONG{0}));
    uint64_t const from_bottom = static_cast<uint64_t>(header_.biHeight - index - 1);
    uint64_t const at = header_.biSize + kTableBytes + from_bottom * RowStride(width, 1);
    size_t const payload = static_cast<size_t>((width + 7) / 8);
    if (at + payload <= bytes_.size()) std::memcpy(bytes_.data() + at, row, payload);
  }

  static thread_local RowTarget const* current_;

  HDIB bitmap_;
  LockedBlock block_;
  RowTarget const* outer_;
  std::span<BYTE> bytes_ = block_.bytes();
  BITMAPINFOHEADER header_{};
};

thread_local RowTarget const* RowTarget::current_ = nullptr;

// The colour table says that a set bit is black, so the rows stay as they are.
int TakeRow(BYTE* row, int32_t index, void* bitmap) {
  if (row == nullptr || bitmap == nullptr) return CCITT_ROW_STOP;
  if (RowTarget const* const target = RowTarget::Of(bitmap)) return target->Take(row, index);
  // The sibling hands its rows over on a thread of its own.
  return RowTarget(bitmap).Take(row, index);
}

// The height to try after data that ended early at `height`. The sibling may know how many rows the
// data hold; every height down to there would fail the same way.
int32_t LowerHeight(Decoder const& sibling, int32_t height) {
  if (sibling.rows_decoded == nullptr) return height - 1;
  return std::clamp(sibling.rows_decoded(), 1, height - 1);
}

// Decodes from the start of `file`, again with fewer rows while the data end before the last one.
template <typename Rewind>
bool DecodeRows(Decoder const& sibling, void* file, Size size, HDIB bitmap, Rewind const& rewind) {
  RowTarget const target(bitmap);
  while (sibling.decode(file, size.width, size.height, CCITT_GROUP4, bitmap, TakeRow) == 0) {
    if (sibling.error() != CCITT_ERROR_DATA_ENDED || size.height <= 1) return false;
    size.height = LowerHeight(sibling, size.height);
    rewind();
  }
  return true;
}

DWORD DecodeFromMemory(Decoder const& sibling, MemoryFile const& memory, HGLOBAL data, Size size,
                       HDIB bitmap) {
  void* const file = memory.open(data, static_cast<DWORD>(GlobalSize(data)));
  // Kept: -1 alone is failure here, unlike in the encoder; a sibling that answers 0 is asked to
  // decode, and callers see the code of that.
  if (file == INVALID_HANDLE_VALUE) return PDF_ERROR_CCITT_LIBRARY;
  bool const decoded =
      DecodeRows(sibling, file, size, bitmap, [&] { memory.seek(file, 0, FILE_BEGIN); });
  memory.close(file);
  return decoded ? PDF_ERROR_NONE : PDF_ERROR_CCITT_CODING;
}

// Kept: after a failure the temporary file stays.
DWORD DecodeFromFile(Decoder const& sibling, HGLOBAL data, Size size, HDIB bitmap) {
  WCHAR path[MAX_PATH];
  DWORD const made = MakeTempFile(SORRELIN_TEXT("~tm"), path);
  if (made != PDF_ERROR_NONE) return made;
  LockedBlock const block(data);
  if (!block || !WriteTempFile(path, block.bytes())) return PDF_ERROR_TEMP_FILE;
  HANDLE const file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return PDF_ERROR_TEMP_FILE;
  bool const decoded = DecodeRows(sibling, file, size, bitmap,
                                  [&] { SetFilePointer(file, 0, nullptr, FILE_BEGIN); });
  CloseHandle(file);
  if (!decoded) return PDF_ERROR_CCITT_CODING;
  DeleteFileW(path);
  return PDF_ERROR_NONE;
}

OwnedBlock BuildBitmap(DWORD width, DWORD height, Polarity polarity) {
  RebuiltDib dib;
  if (!dib.Create(kKindBilevel, width, height)) return OwnedBlock();
  dib.SetColours(ColoursOfCcittData(polarity.black_is_1, polarity.decode_normal));
  return dib.Release();
}

// The decoded bitmap, or null with the code.
Result<OwnedBlock> Outcome(DWORD code, OwnedBlock& bitmap) {
  return code == PDF_ERROR_NONE ? Result<OwnedBlock>(std::move(bitmap)) : Status::Failed(code);
}

}  // namespace

Result<OwnedBlock> DecodeCcitt(HGLOBAL data, DWORD width, DWORD height, Polarity polarity) {
  if (data == nullptr) return Status::Failed();
  {
    OwnedBlock bitmap = BuildBitmap(width, height, polarity);
    if (!bitmap.IsValid()) return Status::Failed(PDF_ERROR_MEMORY);
    SiblingLibrary const library(kCcittLibrary);
    if (!library.IsLoaded()) return Status::Failed(PDF_ERROR_CCITT_LIBRARY);
    MemoryFile const memory(library);
    if (memory.open != nullptr) {
      Decoder const sibling(library);
      if (!memory.IsComplete() || !sibling.IsComplete()) {
        return Status::Failed(PDF_ERROR_CCITT_LIBRARY);
      }
      Size const size{static_cast<int32_t>(width), static_cast<int32_t>(height)};
      return Outcome(DecodeFromMemory(sibling, memory, data, size, bitmap.get()), bitmap);
    }
  }
  // The missing mOpen is the only thing that chooses the file route.
  return DecodeCcittInFile(data, width, height, polarity);
}

Result<OwnedBlock> DecodeCcittInFile(HGLOBAL data, DWORD width, DWORD height, Polarity polarity) {
  if (data == nullptr) return Status::Failed();
  OwnedBlock bitmap = BuildBitmap(width, height, polarity);
  if (!bitmap.IsValid()) return Status::Failed(PDF_ERROR_MEMORY);
  SiblingLibrary const library(kCcittLibrary);
  if (!library.IsLoaded()) return Status::Failed(PDF_ERROR_CCITT_LIBRARY);
  Decoder const sibling(library);
  if (!sibling.IsComplete()) return Status::Failed(PDF_ERROR_CCITT_LIBRARY);
  Size const size{static_cast<int32_t>(width), static_cast<int32_t>(height)};
  return Outcome(DecodeFromFile(sibling, data, size, bitmap.get()), bitmap);
}

}  // namespace sorrelin

// Run-length image data (ISO 32000-1, 7.4.5): pairs of a control byte and a value.
#include <sorrelin/image/dib_view.h>
#include <sorrelin/image/encoders.h>
#include <sorrelin/platform/block.h>
#include <sorrelin/platform/codes.h>
#include <sorrelin/platform/memory.h>

#include <algorithm>
#include <utility>

namespace sorrelin {

namespace {

constexpr DWORD kLongestRun = 128;

// The least size of the coded rows, so that one that cannot be counted is refused at once.
uint64_t LeastSize(uint64_t width, uint64_t height) {
  uint64_t const runs = std::max<uint64_t>((width + kLongestRun - 1) / kLongestRun, 1);
  return height * 2 * runs + 1;
}

class RunWriter {
 public:
  explicit RunWriter(BYTE* out) : out_(out) {}
  // Control 1 - count modulo 256: a single byte is a literal run of one.
  void Emit(DWORD count, BYTE value) {
    out_[size_++] = static_cast<BYTE>(1 - count);
    out_[size_++] = value;
  }
  DWORD size() const { return size_; }

 private:
  BYTE* out_;
  DWORD size_ = 0;
};

// A growing block whose size is, at the end, exactly what was appended.
class OutputBlock {
 public:
  bool Append(std::span<BYTE const> bytes) {
    if (used_ + bytes.size() > UINT32_MAX || !Reserve(used_ + bytes.size())) return false;
    BYTE* const data = static_cast<BYTE*>(GlobalLock(block_.get()));
    std::copy(bytes.begin(), bytes.end(), data + used_);
    GlobalUnlock(block_.get());
    used_ += bytes.size();
    return true;
  }
  OwnedBlock Finish(DWORD& size) {
    if (GlobalReAlloc(block_.get(), used_, GMEM_MOVEABLE) == nullptr) return OwnedBlock();
    size = static_cast<DWORD>(used_);
    return std::move(block_);
  }

 private:
  bool Reserve(size_t bytes) {
    if (bytes <= capacity_) return true;
    size_t const wanted = std::max(bytes, 2 * capacity_);
    if (capacity_ == 0) {
      block_ = OwnedBlock(GlobalAlloc(GHND, wanted));
    } else if (GlobalReAlloc(block_.get(), wanted, GMEM_MOVEABLE) == nullptr) {
      return false;
    }
    capacity_ = block_.IsValid() ? wanted : 0;
    return block_.IsValid();
  }

  OwnedBlock block_;
  size_t capacity_ = 0;
  size_t used_ = 0;
};

// Kept: the rows are always sought after 256 colours, whatever biClrUsed says. Kept: the size
// counts an unset byte, 0 here, after the last pair; the end marker 128 has no place in the block,
// and decoders stop on their row count.
OwnedBlock EncodeRows(DibView const& dib, DWORD& size) {
  BITMAPINFOHEADER const& header = dib.header();
  if (header.biWidth < 0 || header.biHeight < 0) return OwnedBlock();
  DWORD const width = static_cast<DWORD>(header.biWidth);
  if (LeastSize(width, static_cast<uint64_t>(header.biHeight)) > UINT32_MAX) return OwnedBlock();
  uint64_t const stride = DibStride(header.biWidth, 8);
  size_t const row_bytes = std::max<size_t>(width, 1);
  OwnedBlock const row(GlobalAlloc(GHND, row_bytes));
  OwnedBlock const pairs(GlobalAlloc(GHND, 2 * row_bytes));
  LockedBlock const locked_row(row.get());
  LockedBlock const locked_pairs(pairs.get());
  if (!locked_row || !locked_pairs) return OwnedBlock();
  OutputBlock output;
  for (int64_t y = int64_t{header.biHeight} - 1; y >= 0; --y) {
    // A row never holds less than the one above it, so what it lacks is 0 still.
    auto const held = dib.Part(kPaletteRows + static_cast<uint64_t>(y) * stride, row_bytes);
    std::copy(held.begin(), held.end(), locked_row.bytes().begin());
    DWORD const coded =
        EncodeRunLengthRow(locked_row.bytes().data(), width, locked_pairs.bytes().data());
    if (!output.Append(locked_pairs.bytes().first(coded))) return OwnedBlock();
  }
  static constexpr BYTE kUnsetByte = 0;
  return output.Append({&kUnsetByte, 1}) ? output.Finish(size) : OwnedBlock();
}

}  // namespace

DWORD EncodeRunLengthRow(BYTE const* row, DWORD bytes, BYTE* out) {
  RunWriter runs(out);
  BYTE value = row[0];
  DWORD count = 1;
  for (DWORD at = 1; at < bytes; ++at) {
    if (row[at] != value) {
      if (count != 0) runs.Emit(count, value);
      value = row[at];
      count = 1;
    } else if (++count == kLongestRun) {
      runs.Emit(count, value);
      count = 0;
    }
  }
  if (count != 0) runs.Emit(count, value);
  return runs.size();
}

Result<OwnedBlock> EncodeRunLength(DibView const& dib, DWORD& size) {
  if (!dib.IsLocked()) return Refused(Status::Failed());
  if (dib.header().biBitCount != 8) return Refused(PDF_ERROR_INVALID_BITS_PER_PIXEL);
  OwnedBlock encoded = EncodeRows(dib, size);
  return encoded.IsValid() ? Result<OwnedBlock>(std::move(encoded)) : Refused(PDF_ERROR_MEMORY);
}

}  // namespace sorrelin

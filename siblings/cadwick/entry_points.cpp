// The entry points of Cadwick: checks of what callers pass, the choice between memory and file,
// and the error of each thread.
#include <siblings/cadwick/cadwick.h>
#include <siblings/cadwick/group4.h>
#include <siblings/cadwick/memory_file.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace sorrelin::cadwick {
namespace {

constinit thread_local int last_error = CADWICK_OK;
constinit thread_local uint32_t rows_decoded = 0;

int Fail(int error) {
  last_error = error;
  return 0;
}

// Failures of memory end here: no exception leaves an entry point.
template <typename Work>
int Guarded(Work work) {
  try {
    return work();
  } catch (std::bad_alloc const&) {
  } catch (std::length_error const&) {
  }
  return Fail(CADWICK_NO_MEMORY);
}

int Result(Outcome outcome) {
  switch (outcome) {
    case Outcome::kDone:
      return 1;
    case Outcome::kDataEnded:
      return Fail(CADWICK_DATA_ENDED);
    case Outcome::kDamaged:
      return Fail(CADWICK_DATA_DAMAGED);
    case Outcome::kStopped:
      return Fail(CADWICK_STOPPED);
    case Outcome::kSinkFailed:
      break;
  }
  return Fail(CADWICK_IO_FAILED);
}

bool ValidRequest(int32_t width, int32_t height, int32_t compression, CcittRowCallback row) {
  return compression == CCITT_GROUP4 && row != nullptr && ValidPicture(width, height);
}

Picture PictureOf(int32_t width, int32_t height) {
  return {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
}

int FileError() {
  return GetLastError() == ERROR_INVALID_HANDLE ? CADWICK_BAD_HANDLE : CADWICK_IO_FAILED;
}

class MemorySink final : public ByteSink {
 public:
  explicit MemorySink(MemoryFile& file) : file_(file) {}
  bool Write(std::span<BYTE const> bytes) override { return file_.Write(bytes); }

 private:
  MemoryFile& file_;
};

class FileSink final : public ByteSink {
 public:
  explicit FileSink(HANDLE file) : file_(file) {}
  bool Write(std::span<BYTE const> bytes) override {
    DWORD written = 0;
    bool const done = WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                                nullptr) != FALSE;
    if (!done) error_ = FileError();
    return done && written == bytes.size();
  }
  int error() const { return error_; }

 private:
  HANDLE file_;
  int error_ = CADWICK_IO_FAILED;
};

int EncodeToFile(HANDLE file, Picture picture, RowCallback rows) {
  FileSink sink(file);
  Outcome const outcome = EncodeGroup4(picture, rows, sink);
  return outcome == Outcome::kSinkFailed ? Fail(sink.error()) : Result(outcome);
}

// Reads from the position on, until the end or `limit` bytes.
bool ReadUpTo(HANDLE file, uint64_t limit, std::vector<BYTE>& data) {
  constexpr uint64_t kFirstRead = 64 * 1024;
  DWORD count = 1;
  while (count > 0 && data.size() < limit) {
    size_t const old_size = data.size();
    uint64_t const step = std::clamp<uint64_t>(old_size, kFirstRead, UINT32_MAX);
    data.resize(static_cast<size_t>(std::min(limit, old_size + step)));
    DWORD const wanted = static_cast<DWORD>(data.size() - old_size);
    if (ReadFile(file, data.data() + old_size, wanted, &count, nullptr) == FALSE) return false;
    data.resize(old_size + count);
  }
  return true;
}

int DecodeFromFile(HANDLE file, Picture picture, RowCallback rows) {
  std::vector<BYTE> data;
  if (!ReadUpTo(file, MaxCodedBytes(picture), data)) return Fail(FileError());
  DecodeResult const result = DecodeGroup4(data, picture, rows);
  rows_decoded = result.rows;
  return Result(result.outcome);
}

// True if an earlier decode has shown that the file holds fewer rows than are wanted now.
bool IsKnownToBeShort(MemoryFile const& file, Picture picture) {
  auto const& known = file.short_decode();
  return known && known->position == file.position() && known->width == picture.width &&
         known->rows < picture.height;
}

int DecodeFromMemory(MemoryFile& file, Picture picture, RowCallback rows) {
  if (IsKnownToBeShort(file, picture)) {
    rows_decoded = file.short_decode()->rows;
    return Fail(CADWICK_DATA_ENDED);
  }
  MemoryFileView const view(file);
  DecodeResult const result = DecodeGroup4(view.bytes(), picture, rows);
  rows_decoded = result.rows;
  if (result.outcome == Outcome::kDataEnded) {
    file.Remember({file.position(), picture.width, result.rows});
  }
  return Result(result.outcome);
}

}  // namespace
}  // namespace sorrelin::cadwick

namespace cadwick = sorrelin::cadwick;

// Callers cast what they find by name to these types.
static_assert(std::is_same_v<decltype(&EncodeCcittImage), EncodeCcittImageFunction>);
static_assert(std::is_same_v<decltype(&DecodeCcittImage), DecodeCcittImageFunction>);
static_assert(std::is_same_v<decltype(&TiffError), TiffErrorFunction>);
static_assert(std::is_same_v<decltype(&CcittRowsDecoded), CcittRowsDecodedFunction>);
static_assert(std::is_same_v<decltype(&mOpen), mOpenFunction>);
static_assert(std::is_same_v<decltype(&mClose), mCloseFunction>);
static_assert(std::is_same_v<decltype(&mSeek), mSeekFunction>);

int EncodeCcittImage(void* hFile, int32_t nWidth, int32_t nHeight, int32_t nCompression,
                     void* pUser, CcittRowCallback pRow) {
  if (!cadwick::ValidRequest(nWidth, nHeight, nCompression, pRow)) {
    return cadwick::Fail(CADWICK_BAD_ARGUMENT);
  }
  return cadwick::Guarded([&] {
    cadwick::Picture const picture = cadwick::PictureOf(nWidth, nHeight);
    auto const memory_file = cadwick::FindMemoryFile(hFile);
    if (memory_file == nullptr) return cadwick::EncodeToFile(hFile, picture, {pRow, pUser});
    cadwick::MemorySink sink(*memory_file);
    return cadwick::Result(cadwick::EncodeGroup4(picture, {pRow, pUser}, sink));
  });
}

int DecodeCcittImage(void* hFile, int32_t nWidth, int32_t nHeight, int32_t nCompression,
                     void* pUser, CcittRowCallback pRow) {
  cadwick::rows_decoded = 0;
  if (!cadwick::ValidRequest(nWidth, nHeight, nCompression, pRow)) {
    return cadwick::Fail(CADWICK_BAD_ARGUMENT);
  }
  return cadwick::Guarded([&] {
    cadwick::Picture const picture = cadwick::PictureOf(nWidth, nHeight);
    auto const memory_file = cadwick::FindMemoryFile(hFile);
    if (memory_file == nullptr) return cadwick::DecodeFromFile(hFile, picture, {pRow, pUser});
    return cadwick::DecodeFromMemory(*memory_file, picture, {pRow, pUser});
  });
}

int TiffError(void) { return cadwick::last_error; }

int CcittRowsDecoded(void) { return static_cast<int>(cadwick::rows_decoded); }

void* mOpen(HGLOBAL hBlock, DWORD nSize) {
  try {
    return cadwick::OpenMemoryFile(hBlock, nSize);
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

int mClose(void* hMemoryFile) {
  auto const file = cadwick::CloseMemoryFile(hMemoryFile);
  return file != nullptr && file->Finish() ? 0 : -1;
}

int mSeek(void* hMemoryFile, int32_t nOffset, int32_t nOrigin) {
  auto const file = cadwick::FindMemoryFile(hMemoryFile);
  return file != nullptr && file->Seek(nOffset, static_cast<DWORD>(nOrigin)) ? 0 : -1;
}

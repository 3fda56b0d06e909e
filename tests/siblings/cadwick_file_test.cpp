// The targets of coded data: memory files over global blocks, and files from CreateFileW.
#include <gmock/gmock.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/file.h>
#include <tests/siblings/cadwick_support.h>

using namespace test;

namespace {

Picture const kPicture = RandomPicture(123, 45, 1);
// More than one buffer of the coder.
Picture const kNoise = RandomPicture(2000, 800, 2, 1);

int EncodeInto(void* file, Picture const& picture) {
  Giver giver{&picture, 0, -1, {}};
  return EncodeCcittImage(file, picture.width, picture.height(), CCITT_GROUP4, &giver, Giver::Call);
}

class DiskFile {
 public:
  DiskFile(TempDir const& folder, DWORD access, DWORD disposition)
      : handle_(CreateFileW((folder / "coded").string<WCHAR>().c_str(), access, FILE_SHARE_READ,
                            nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~DiskFile() { CloseHandle(handle_); }
  DiskFile(DiskFile const&) = delete;
  DiskFile& operator=(DiskFile const&) = delete;
  operator HANDLE() const { return handle_; }

 private:
  HANDLE handle_;
};

}  // namespace

TEST(MemoryFile, BlockEndsBehindWhatWasWritten) {
  for (Picture const& picture : {kPicture, kNoise}) {
    Bytes const expected = TiffOnDisk().Encode(picture);
    for (size_t const size : {size_t{1}, expected.size(), expected.size() + 5000}) {
      Block const block(GlobalAlloc(GHND, size));
      void* const file = mOpen(block, static_cast<DWORD>(size));
      EXPECT_EQ(EncodeInto(file, picture), 1);
      EXPECT_EQ(mClose(file), 0);
      EXPECT_EQ(block.Content(), expected) << size;
    }
  }
}

TEST(MemoryFile, BlockIsLeftAloneIfNothingWasWritten) {
  Block const block = BlockOf({1, 2, 3, 4, 5});
  EXPECT_EQ(mClose(mOpen(block, 2)), 0);
  EXPECT_EQ(block.Content(), (Bytes{1, 2, 3, 4, 5}));
}

TEST(MemoryFile, BlockIsNotLockedBetweenCalls) {
  Block const block = BlockOf(Encode(kPicture));
  OpenMemory const file(block);
  EXPECT_EQ(DecodeFrom(file, kPicture.width, kPicture.height()).result, 1);
  EXPECT_FALSE(GlobalUnlock(block));
  EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
}

TEST(MemoryFile, SecondPictureFollowsTheFirst) {
  Block const block(GlobalAlloc(GHND, 1));
  void* const file = mOpen(block, 1);
  EXPECT_EQ(EncodeInto(file, kPicture), 1);
  EXPECT_EQ(EncodeInto(file, kNoise), 1);
  mClose(file);
  Bytes expected = Encode(kPicture);
  Bytes const second = Encode(kNoise);
  expected.insert(expected.end(), second.begin(), second.end());
  EXPECT_EQ(block.Content(), expected);
}

TEST(MemoryFile, DecodesFromItsPosition) {
  Bytes data = Encode(kPicture);
  data.insert(data.begin(), 3, 0xAA);
  Block const block = BlockOf(data);
  OpenMemory const file(block);
  EXPECT_EQ(mSeek(file, 3, 0), 0);
  EXPECT_EQ(DecodeFrom(file, 123, 45).picture, kPicture);
  EXPECT_EQ(DecodeFrom(file, 123, 45).picture, kPicture) << "the position moved";
}

TEST(MemoryFile, BytesBehindItsSizeAreNotRead) {
  Block const block = BlockOf(Bits("1111 1111 1111 1111"));
  void* const file = mOpen(block, 1);
  EXPECT_EQ(DecodeFrom(file, 8, 16).rows_told, 8);
  mClose(file);
}

TEST(MemoryFile, SizeIsAtMostTheBlocks) {
  Block const block = BlockOf(Bits("1111 1111"));
  void* const file = mOpen(block, 1000);
  EXPECT_EQ(DecodeFrom(file, 8, 9).rows_told, 8);
  EXPECT_EQ(mSeek(file, 9, 0), -1);
  mClose(file);
}

TEST(MemoryFile, BlockOfNoBytesIsAFileWithoutData) {
  Block const block(GlobalAlloc(GHND, 0));
  void* const file = mOpen(block, 0);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(DecodeFrom(file, 8, 1).error, CADWICK_DATA_ENDED);
  mClose(file);
}

TEST(MemoryFile, SeekKnowsThreeOriginsAndTheFilesEnds) {
  Block const block = BlockOf(Bytes(10));
  OpenMemory const file(block);
  EXPECT_EQ(mSeek(file, 10, 0), 0);
  EXPECT_EQ(mSeek(file, -4, 1), 0);
  EXPECT_EQ(mSeek(file, -10, 2), 0);
  EXPECT_EQ(mSeek(file, 0, 0), 0);
  EXPECT_EQ(mSeek(file, -1, 0), -1);
  EXPECT_EQ(mSeek(file, 11, 0), -1);
  EXPECT_EQ(mSeek(file, 1, 2), -1);
  EXPECT_EQ(mSeek(file, 0, 3), -1);
  EXPECT_EQ(mSeek(file, 0, -1), -1);
}

TEST(MemoryFile, ShrunkenBlockIsReadAsFarAsItGoes) {
  Bytes const data = Encode(kPicture);
  Block const block = BlockOf(data);
  OpenMemory const file(block);
  GlobalReAlloc(block, data.size() / 2, GMEM_MOVEABLE);
  Decoded const decoded = DecodeFrom(file, 123, 45);
  EXPECT_EQ(decoded.error, CADWICK_DATA_ENDED);
  EXPECT_GT(decoded.rows_told, 5);
}

// The callers' loop asks for one row less until the decode succeeds.
TEST(MemoryFile, KnownShortageCostsNoRows) {
  Block const block = BlockOf(Encode(kPicture));
  OpenMemory const file(block);
  EXPECT_EQ(DecodeFrom(file, 123, 100).picture, kPicture);
  for (int32_t height = 99; height > 45; --height) {
    EXPECT_EQ(mSeek(file, 0, 0), 0);
    Decoded const again = DecodeFrom(file, 123, height);
    EXPECT_EQ(again.error, CADWICK_DATA_ENDED);
    EXPECT_EQ(again.rows_told, 45);
    EXPECT_EQ(again.picture.height(), 0);
  }
  EXPECT_EQ(DecodeFrom(file, 123, 45).picture, kPicture);
}

TEST(MemoryFile, ShortageIsKnownForOneWidthAndPositionOnly) {
  Block const block = BlockOf(Bits("1111 1111 1111 1111"));
  OpenMemory const file(block);
  EXPECT_EQ(DecodeFrom(file, 8, 20).picture.height(), 16);
  EXPECT_EQ(DecodeFrom(file, 9, 20).picture.height(), 16);
  mSeek(file, 1, 0);
  EXPECT_EQ(DecodeFrom(file, 9, 20).picture.height(), 8);
}

TEST(MemoryFile, WritingForgetsTheShortage) {
  Block const block = BlockOf(Bytes(300));
  void* const file = mOpen(block, 300);
  EXPECT_EQ(DecodeFrom(file, 123, 45).rows_told, 0);
  EXPECT_EQ(EncodeInto(file, kPicture), 1);
  mSeek(file, 0, 0);
  EXPECT_EQ(DecodeFrom(file, 123, 45).picture, kPicture);
  mClose(file);
}

TEST(DiskFile, TakesTheSameDataAsAMemoryFile) {
  TempDir const folder;
  for (Picture const& picture : {kPicture, kNoise}) {
    EXPECT_EQ(EncodeInto(DiskFile(folder, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS), picture),
              1);
    EXPECT_EQ(ReadAll(folder / "coded"), Encode(picture));
  }
}

TEST(DiskFile, IsWrittenAndReadFromItsPosition) {
  TempDir const folder;
  DiskFile const file(folder, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
  WriteFile(file, "abc", 3, nullptr, nullptr);
  EXPECT_EQ(EncodeInto(file, kNoise), 1);
  SetFilePointer(file, 3, nullptr, FILE_BEGIN);
  Decoded const decoded = DecodeFrom(file, kNoise.width, kNoise.height());
  EXPECT_EQ(decoded.result, 1);
  EXPECT_EQ(decoded.picture, kNoise);
}

TEST(DiskFile, ShortDataAreToldWithTheirRows) {
  TempDir const folder;
  WriteAll(folder / "coded", Encode(kPicture));
  DiskFile const file(folder, GENERIC_READ, OPEN_EXISTING);
  Decoded const decoded = DecodeFrom(file, 123, 46);
  EXPECT_EQ(decoded.error, CADWICK_DATA_ENDED);
  EXPECT_EQ(decoded.rows_told, 45);
}

TEST(DiskFile, ThatMayNotBeWrittenFailsTheCoding) {
  TempDir const folder;
  WriteAll(folder / "coded", {});
  EXPECT_EQ(EncodeInto(DiskFile(folder, GENERIC_READ, OPEN_EXISTING), kPicture), 0);
  EXPECT_EQ(TiffError(), CADWICK_IO_FAILED);
}

TEST(DiskFile, ThatMayNotBeReadFailsTheDecoding) {
  TempDir const folder;
  EXPECT_EQ(DecodeFrom(DiskFile(folder, GENERIC_WRITE, CREATE_ALWAYS), 8, 1).error,
            CADWICK_IO_FAILED);
}

TEST(FileHandle, ForeignValuesAreRecognised) {
  int local = 0;
  Block const block(GlobalAlloc(GHND, 10));
  for (void* const handle : {static_cast<void*>(nullptr), static_cast<void*>(INVALID_HANDLE_VALUE),
                             static_cast<void*>(&local), static_cast<void*>(block.get()),
                             reinterpret_cast<void*>(uintptr_t{7})}) {
    EXPECT_EQ(EncodeInto(handle, kPicture), 0);
    EXPECT_EQ(TiffError(), CADWICK_BAD_HANDLE);
    EXPECT_EQ(DecodeFrom(handle, 8, 1).error, CADWICK_BAD_HANDLE);
    EXPECT_EQ(mSeek(handle, 0, 0), -1);
    EXPECT_EQ(mClose(handle), -1);
  }
}

TEST(FileHandle, ClosedFileIsRecognised) {
  Block const block(GlobalAlloc(GHND, 10));
  void* const file = mOpen(block, 10);
  EXPECT_EQ(mClose(file), 0);
  OpenMemory const next(block);
  EXPECT_NE(static_cast<void*>(next), file);
  EXPECT_EQ(DecodeFrom(file, 8, 1).error, CADWICK_BAD_HANDLE);
  EXPECT_EQ(mClose(file), -1);
}

TEST(FileHandle, ValuesThatAreNoBlockAreNotOpened) {
  int local = 0;
  Block block(GlobalAlloc(GHND, 10));
  HGLOBAL const stale = block.get();
  block = Block();
  EXPECT_EQ(mOpen(nullptr, 1), nullptr);
  EXPECT_EQ(mOpen(INVALID_HANDLE_VALUE, 1), nullptr);
  EXPECT_EQ(mOpen(&local, 1), nullptr);
  EXPECT_EQ(mOpen(stale, 1), nullptr);
}

TEST(FileHandle, FreedBlockFailsTheCallsOfItsFile) {
  Block block(GlobalAlloc(GHND, 10));
  void* const file = mOpen(block, 10);
  block = Block();
  EXPECT_EQ(EncodeInto(file, kPicture), 0);
  EXPECT_EQ(TiffError(), CADWICK_IO_FAILED);
  EXPECT_EQ(DecodeFrom(file, 8, 1).error, CADWICK_DATA_ENDED);
  EXPECT_EQ(mClose(file), 0);
}

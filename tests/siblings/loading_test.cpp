// The siblings as the library meets them: found by the name a caller gave, entered through
// addresses, and released while results live on.
#include <gmock/gmock.h>
#include <sorrelin/image/codecs/sibling.h>
#include <sorrelin/platform/memory.h>
#include <sorrelin/platform/module.h>
#include <sorrelin/platform/wide_string.h>
#include <tests/support/dib.h>
#include <tests/support/environment.h>
#include <tests/support/temp_dir.h>

#include <cstring>
#include <string>

using namespace test;

namespace {

class Sibling {
 public:
  explicit Sibling(sorrelin::WideString const& name)
      : module_(
            LoadLibraryW((std::filesystem::path(SIBLING_FOLDER) / name).string<WCHAR>().c_str())) {}
  ~Sibling() {
    if (module_ != nullptr) FreeLibrary(module_);
  }
  Sibling(Sibling const&) = delete;
  Sibling& operator=(Sibling const&) = delete;
  bool loaded() const { return module_ != nullptr; }
  template <typename Function>
  Function Entry(char const* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module_, name)));
  }

 private:
  HMODULE module_;
};

constexpr int32_t kWidth = 20;
constexpr int32_t kHeight = 6;

int GiveRow(BYTE* row, int32_t index, void*) {
  if (index >= kHeight) return CCITT_ROW_PAST_END;
  std::memset(row, 0x10 * index, 4);
  return CCITT_ROW_DONE;
}

int TakeRow(BYTE* row, int32_t index, void* rows) {
  static_cast<Bytes*>(rows)->push_back(row[0]);
  return static_cast<int32_t>(static_cast<Bytes*>(rows)->size()) == index + 1 ? CCITT_ROW_DONE
                                                                              : CCITT_ROW_STOP;
}

Block EncodeThroughCadwick() {
  Sibling const cadwick(SORRELIN_TEXT("Cadwick.dll"));
  Block block(GlobalAlloc(GHND, 1));
  void* const file = cadwick.Entry<mOpenFunction>("mOpen")(block, 1);
  auto const encode = cadwick.Entry<EncodeCcittImageFunction>("EncodeCcittImage");
  EXPECT_NE(encode(file, kWidth, kHeight, CCITT_GROUP4, nullptr, GiveRow), 0);
  cadwick.Entry<mCloseFunction>("mClose")(file);
  return block;
}

}  // namespace

TEST(SiblingLoading, SiblingsAreFoundByTheirNamesInAnyLetterCase) {
  EXPECT_TRUE(Sibling(SORRELIN_TEXT("Cadwick.dll")).loaded());
  EXPECT_TRUE(Sibling(SORRELIN_TEXT("RENNICK.DLL")).loaded());
}

TEST(SiblingLoading, SiblingsAreFoundByTheNamesOfTheirFiles) {
  for (char const* const name : {"cadwick", "rennick"}) {
    EXPECT_TRUE(Sibling(sorrelin::ToWide(LibraryFile(name).c_str())).loaded()) << name;
  }
}

TEST(SiblingLoading, CadwickHasItsEntryPoints) {
  Sibling const cadwick(SORRELIN_TEXT("Cadwick.dll"));
  for (char const* name : {"EncodeCcittImage", "DecodeCcittImage", "TiffError", "mOpen", "mClose",
                           "mSeek", "CcittRowsDecoded"}) {
    EXPECT_NE(cadwick.Entry<void (*)()>(name), nullptr) << name;
  }
}

TEST(SiblingLoading, RennickHasItsEntryPoints) {
  Sibling const rennick(SORRELIN_TEXT("Rennick.dll"));
  for (char const* name : {"SaveDIBAsJPEGToMemoryEx", "SaveDIBInJPEGFileExW",
                           "LoadJPEGIntoDIBFromMemory", "LoadJPEGIntoDIBW"}) {
    EXPECT_NE(rennick.Entry<void (*)()>(name), nullptr) << name;
  }
}

TEST(SiblingLoading, DataCodedInOneLoadAreDecodedInTheNext) {
  Block const block = EncodeThroughCadwick();
  EXPECT_GT(GlobalSize(block), 4u);
  Sibling const cadwick(SORRELIN_TEXT("Cadwick.dll"));
  void* const file =
      cadwick.Entry<mOpenFunction>("mOpen")(block, static_cast<DWORD>(GlobalSize(block)));
  auto const decode = cadwick.Entry<DecodeCcittImageFunction>("DecodeCcittImage");
  Bytes rows;
  EXPECT_EQ(decode(file, kWidth, kHeight + 1, CCITT_GROUP4, &rows, TakeRow), 0);
  EXPECT_EQ(cadwick.Entry<TiffErrorFunction>("TiffError")(), CCITT_ERROR_DATA_ENDED);
  EXPECT_EQ(cadwick.Entry<CcittRowsDecodedFunction>("CcittRowsDecoded")(), kHeight);
  rows.clear();
  cadwick.Entry<mSeekFunction>("mSeek")(file, 0, 0);
  EXPECT_NE(decode(file, kWidth, kHeight, CCITT_GROUP4, &rows, TakeRow), 0);
  EXPECT_EQ(rows, (Bytes{0x00, 0x10, 0x20, 0x30, 0x40, 0x50}));
  cadwick.Entry<mCloseFunction>("mClose")(file);
}

// A process of Windows has 1,088 places for thread-local values.
TEST(SiblingLoading, CodecIsLoadedForEachOfManyPages) {
  for (int page = 0; page < 1200; ++page) {
    EncodeThroughCadwick();
    Sibling const cadwick(SORRELIN_TEXT("Cadwick.dll"));
    ASSERT_TRUE(cadwick.loaded()) << page;
    cadwick.Entry<TiffErrorFunction>("TiffError")();
  }
}

TEST(SiblingLoading, FilesLeftOpenAreGoneAfterTheNextLoad) {
  Block const block(GlobalAlloc(GHND, 1));
  {
    Sibling const cadwick(SORRELIN_TEXT("Cadwick.dll"));
    EXPECT_NE(cadwick.Entry<mOpenFunction>("mOpen")(block, 1), nullptr);
  }
  EXPECT_TRUE(Sibling(SORRELIN_TEXT("Cadwick.dll")).loaded());
  EXPECT_EQ(GlobalSize(block), 1u);
}

TEST(SiblingLoading, BitmapsOutliveRennick) {
  Block const dib =
      MakeDib({.width = 9, .height = 7, .bits = 24}, [](LONG, LONG) { return 0x808080; });
  BYTE const record[JPEG_RECORD_BYTES] = {};
  Block file;
  Block back;
  {
    Sibling const rennick(SORRELIN_TEXT("Rennick.dll"));
    int status = -1;
    auto const save = rennick.Entry<SaveDIBAsJPEGToMemoryExFunction>("SaveDIBAsJPEGToMemoryEx");
    file = Block(save(dib, record, &status));
    EXPECT_EQ(status, 0);
    Bytes const bytes = file.Content();
    auto const load = rennick.Entry<LoadJPEGIntoDIBFromMemoryFunction>("LoadJPEGIntoDIBFromMemory");
    back = Block(load(bytes.data(), static_cast<DWORD>(bytes.size())));
  }
  Bytes const pixels = back.Content();
  EXPECT_THAT(Bytes(pixels.begin() + 40, pixels.begin() + 40 + 27), testing::Each(0x80));
}

TEST(SiblingLoading, RennickReadsTheFileItWrote) {
  TempDir const folder;
  sorrelin::WideString const path = (folder / "a.jpg").string<WCHAR>();
  Block const dib = MakeDib({.width = 9, .height = 7, .bits = 8}, [](LONG, LONG) { return 77; });
  BYTE const record[JPEG_RECORD_BYTES] = {};
  Sibling const rennick(SORRELIN_TEXT("Rennick.dll"));
  auto const save = rennick.Entry<SaveDIBInJPEGFileExWFunction>("SaveDIBInJPEGFileExW");
  EXPECT_EQ(save(path.c_str(), dib, record), 0);
  Block const back(rennick.Entry<LoadJPEGIntoDIBWFunction>("LoadJPEGIntoDIBW")(path.c_str()));
  EXPECT_EQ(back.Content().at(1064 + 8), 77);
}
